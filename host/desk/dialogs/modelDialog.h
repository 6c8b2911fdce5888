// SPDX-License-Identifier: MIT
/// A variogram model and its structures: edited as a table, or fitted, beside the empirical
/// variogram, and stored under a name. It is not modal: views can be used while it is open.
#pragma once
#include <QDialog>
#include <QTimer>
#include <optional>
#include "core/geostatistics/variogramModels.h"
#include "core/render/graph.h"
#include "datainterface/MethodRecords.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace meridor {

class MethodRegister;
class Workspace;

/// The classes of pairs and the curve of a model.
class ModelGraph : public QWidget {
    Q_OBJECT
public:
    explicit ModelGraph(QWidget *parent = nullptr);
    QSize sizeHint() const override;
    void show(const Graph &graph);
    void showText(const QString &text);
    const Graph &graph() const { return mGraph; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Graph mGraph;
    QString mText; ///< in place of the graph; empty: the graph is shown
};

class ModelDialog : public QDialog {
    Q_OBJECT
public:
    ModelDialog(Workspace &workspace, const MethodRegister &methods, QWidget *parent);

    /// Shows a new model of the dataset; -1: of the project.
    void setDataset(int dataset);
    /// Shows a model as it is stored. One of the same name and owner is replaced by Save.
    void setModel(const VariogramModel &model);

    /// The structures as they are edited. Raises a Failure that names the row and column.
    VariogramModelAtT structures() const;
    /// Both tell in the dialog why they failed.
    bool fit();
    bool save();

Q_SIGNALS:
    void helpWanted(const QString &topic);

private:
    QComboBox *addChoice(QFormLayout *form, const char *name, const QString &label);
    QLineEdit *addText(QFormLayout *form, const char *name, const QString &label,
                       const QString &hint);
    void makeTable();
    void fillDatasets();
    void fillTimes();
    void addRow(const VariogramBasicModel &structure);
    void showStructures(const VariogramModelAtT &model);
    int dataset() const;
    bool hasTimes() const;
    bool isAnisotropic() const;
    VariogramPlan plan() const;
    QVector<MethodParameter> parameters() const;
    /// The pairs are others: they are counted a moment later.
    void changePairs();
    /// @param isAsked  also of many objects, with a progress dialog.
    bool count(bool isAsked);
    /// Draws the model as it is edited, and shows its command line or what is wrong with it.
    void refresh();
    void tell(const QString &trouble);
    void closeIf(bool isGone);

    Workspace &mWorkspace;
    const MethodRegister &mMethods;
    QComboBox *mDataset = nullptr;
    QComboBox *mTime = nullptr;
    QComboBox *mEstimator = nullptr;
    QLineEdit *mCutoff = nullptr;
    QLineEdit *mWidth = nullptr;
    QCheckBox *mScores = nullptr;
    QLineEdit *mNugget = nullptr;
    QTableWidget *mTable = nullptr;
    QLineEdit *mName = nullptr;
    QCheckBox *mReplace = nullptr;
    ModelGraph *mGraph = nullptr;
    QLineEdit *mCommandLine = nullptr;
    QLabel *mTrouble = nullptr;
    QTimer mDelay;
    std::optional<VariogramAt> mPairs; ///< of the plan; none while they are not counted
    QString mPairsTrouble;             ///< why not
    bool mIsFilling = false;
};

} // namespace meridor
