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
#include "core/project/progress.h"
#include "datainterface/MethodRecords.h"

namespace meridor {

class Workspace;

/// One parameter of a method, as a form shows it.
struct MethodField {
    enum Kind {
        Geography,
        Polygons, ///< a geography of polygons
        Dataset,
        Numbers, ///< a dataset of numbers
        Grids,   ///< a dataset of a grid
        WeightSet,
        Model, ///< a variogram model of a dataset, by name
        Text,
        Number,
        Whole,
        Choice,
        Flag,
        Time ///< as text
    };

    QString name;  ///< of the MethodParameter, such as "permutations"
    QString label; ///< for people
    Kind kind = Text;
    QVariant value = {};      ///< the default
    QStringList choices = {}; ///< of a Choice
    double least = 0;         ///< of a Number or Whole
    double most = 1e9;
    QString of =
        {}; ///< a Dataset, WeightSet or Time: name of the field with its geography or dataset
    QString help = {};     ///< one sentence
    bool optional = false; ///< of what is chosen among things of the project: may be none
    /// The field has a meaning only with these values of another one; a flag has "true" and "false".
    QString decidedBy = {};
    QStringList deciding = {};
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

struct Method {
    QString name; ///< a word that identifies the method, such as "moran"
    QString title;
    QString helpTopic; ///< page and heading of the help, such as "meridor.md#moran"
    QVector<MethodField> fields;
    /// Changes the project, or only fills the report. Raises a Failure.
    std::function<void(Workspace &, const MethodArguments &, MethodReport &, const Progress &)>
        execute;
    /// The words after "meridor" that do the same.
    std::function<QStringList(Workspace &, const MethodArguments &)> commandLine;
    /// Whether a call with these parameters changes the project.
    std::function<bool(const MethodArguments &)> changesProject;
};

/// All methods. Their numbers are their positions, from 1.
class MethodRegister {
public:
    MethodRegister();
    const QVector<Method> &all() const { return mMethods; }
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
    /// The parameters with the ids of things that are given by name. Raises a Failure for one that is
    /// none of the method's fields, and for a value that its field cannot have.
    QVector<MethodParameter> resolved(const Method &method,
                                      const QVector<MethodParameter> &parameters) const;
    /// The command line of a method; empty if it cannot be told for these parameters.
    QString invocation(Workspace &workspace, const Method &method,
                       const QVector<MethodParameter> &parameters) const;

private:
    QVector<MethodParameter> completed(const Method &method,
                                       const QVector<MethodParameter> &parameters) const;

    QVector<Method> mMethods;
};

/// Each is told in a source of its own.
Method moranMethod();
Method weightsMethod();
Method zonalMethod();
Method variogramMethod();
Method krigeMethod();
Method simulateMethod();
Method valueSelectionMethod();
Method neighborSelectionMethod();
Method convertMethod();

} // namespace meridor
