// SPDX-License-Identifier: MIT
/// Methods: work on the project with parameters, which a dialog asks for, the library can call
/// through its controller, and the log notes as a command line.
#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <functional>
#include <memory>
#include <vector>
#include "core/project/progress.h"
#include "datainterface/MethodRecords.h"

namespace meridor {

class Workspace;

/// One parameter of a method, as a form shows it.
struct MethodField {
    enum Kind { Geography, Dataset, Numbers, WeightSet, Text, Number, Whole, Choice, Flag, Time };

    QString name;  ///< of the MethodParameter, such as "permutations"
    QString label; ///< for people
    Kind kind = Text;
    QVariant value = {};      ///< the default
    QStringList choices = {}; ///< of a Choice
    double least = 0;         ///< of a Number or Whole
    double most = 1e9;
    QString of =
        {}; ///< a Dataset, WeightSet or Time: name of the field with its geography or dataset
    QString help = {}; ///< one sentence
};

/// The values of the parameters by name.
class MethodArguments {
public:
    explicit MethodArguments(const QVector<MethodParameter> &parameters);
    QVariant value(const QString &name) const { return mValues.value(name); }
    QString text(const QString &name) const { return value(name).toString(); }
    int whole(const QString &name) const { return value(name).toInt(); }
    double number(const QString &name) const { return value(name).toDouble(); }
    bool flag(const QString &name) const { return value(name).toBool(); }
    /// An id of a geography, dataset or weight set, given by id or by name; -1 if there is none.
    int id(const QString &name) const { return mValues.value(name, -1).toInt(); }

private:
    QMap<QString, QVariant> mValues;
};

class Method {
public:
    virtual ~Method();
    /// A word that identifies the method, such as "moran".
    virtual QString name() const = 0;
    virtual QString title() const = 0;
    /// Page and heading of the help, such as "meridor.md#moran".
    virtual QString helpTopic() const = 0;
    virtual QVector<MethodField> fields() const = 0;
    /// Changes the project, or fills only the report. Raises a Failure.
    virtual void execute(Workspace &workspace, const MethodArguments &arguments,
                         MethodReport &report, const Progress &progress) const = 0;
    /// The words after "meridor" that do the same.
    virtual QStringList commandLine(const Workspace &workspace,
                                    const MethodArguments &arguments) const = 0;
    virtual bool changesProject() const { return true; }
};

/// All methods. Their numbers are their positions, from 1.
class MethodRegister {
public:
    MethodRegister();
    int count() const { return static_cast<int>(mMethods.size()); }
    /// Null for an unknown one.
    const Method *find(int number) const;
    const Method *find(const QString &name) const;
    /// 0 for an unknown one.
    int numberOf(const QString &name) const;
    /// Runs a method through the workspace, which tells the user of a failure, and notes it in the
    /// log.
    /// @param parameters  those that are absent have their defaults.
    bool execute(Workspace &workspace, const Method &method,
                 const QVector<MethodParameter> &parameters, MethodReport &report) const;
    /// The command line of a method; empty if it cannot be told for these parameters.
    QString invocation(Workspace &workspace, const Method &method,
                       const QVector<MethodParameter> &parameters) const;

private:
    QVector<MethodParameter> completed(const Method &method,
                                       const QVector<MethodParameter> &parameters) const;

    std::vector<std::unique_ptr<Method>> mMethods;
};

/// The names of things in command lines: GEOGRAPHY/DATASET and GEOGRAPHY/SET.
QString datasetWord(int dataset);
QString weightSetWord(int set);

/// Each makes one method, in a source of its own.
std::unique_ptr<Method> makeMoranMethod();

} // namespace meridor
