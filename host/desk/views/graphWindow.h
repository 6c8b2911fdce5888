// SPDX-License-Identifier: MIT
/// The window of a graph, in which its datasets are chosen.
#pragma once
#include <QHash>
#include <QRectF>
#include <QVector>
#include "datainterface/MethodRecords.h"
#include "desk/views/viewFactory.h"
#include "desk/views/viewWindow.h"

class QCheckBox;
class QComboBox;
class QHBoxLayout;

namespace meridor {

class GraphView;

class GraphWindow final : public ViewWindow {
    Q_OBJECT
public:
    /// @param datasets, weights  see openGraph().
    GraphWindow(Workspace &workspace, GraphKind kind, const QVector<int> &datasets, int weights,
                QWidget *parent = nullptr);

    GraphKind kind() const { return mKind; }
    /// Null after its dataset was removed.
    GraphView *graph() const;
    QString title() const override;
    /// Instead of the names of the datasets; empty: those again.
    void setTitle(const QString &title);
    QString refusal(int dataset) const override;
    /// Shows another dataset; in a scatter plot it takes the place of the vertical one.
    void addDataset(int dataset) override;
    /// Shows other datasets of one geography. False after telling the user why not.
    bool show(const QVector<int> &datasets, int weights = -1);
    using QWidget::show;
    /// Colours a histogram or scatter plot by classes of its first dataset.
    void setClasses(const QVector<double> &limits, const QVector<QColor> &colors);

    QJsonObject state() const override;
    void restore(const QJsonObject &state) override;
    QStringList commandLine(const QString &picture) const override;

protected:
    void viewLeaves(View *view) override;
    void fitParts() override;

private:
    GraphView *newView() const;
    void makeChoices();
    QComboBox *addChoice(const char *name, const QString &label);
    void fillChoices();
    void choose();

    GraphKind mKind;
    QVector<int> mDatasets;
    int mWeights = -1;
    QString mTitle;
    QVector<double> mLimits;
    QVector<QColor> mColors;
    QVector<QComboBox *> mChoices; ///< one for each dataset
    QComboBox *mWeightChoice = nullptr;
    QCheckBox *mMapClasses = nullptr; ///< of a histogram
    bool mMustFill = true;            ///< the choices are not those of the present project
    QWidget *mHolder;
    QHBoxLayout *mChoiceRow = nullptr;
};

/// Answers ControllerBase::CreateGraphWindow: as openGraph(), at the time `t` if it is one of the
/// geography; for a time plot `t` is not used.
/// @param colors  its class limits and colours are those of the bars or points; with colours alone
///                there are none.
/// @param points  a place that a scatter plot marks with two lines; may be null.
/// @param bounds  the range that is shown; may be null.
GraphWindow *openGraph(Workspace &workspace, GraphTypes type, const QVector<int> &datasets,
                       qint64 t, const QString &title, const ColorSchemeInfo &colors,
                       const QPointF *points, const QRectF *bounds);

/// A word for a kind of graph, as the state of windows and scripts have it, such as "scatter".
QString graphKindName(GraphKind kind);
/// False for an unknown word.
bool graphKindOf(const QString &name, GraphKind &kind);

} // namespace meridor
