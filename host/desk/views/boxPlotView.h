// SPDX-License-Identifier: MIT
/// The distribution of values at each time, with that of the selected objects.
#pragma once
#include <QVector>
#include "core/plot/plotValues.h"
#include "desk/views/historyView.h"

namespace meridor {

class BoxPlotView final : public HistoryView {
    Q_OBJECT
public:
    BoxPlotView(Workspace &workspace, int dataset);

    QString title() const override;
    QStringList commandLine(const QString &picture) const override;

    int objectAt(const QPoint &pixel) const override;
    void drawMark(QPainter &painter, int object) override;

    struct Box {
        int step;
        double at; ///< on the axis of times; 0 for the only box
        BoxFigures figures;
        int count; ///< of values
        bool hasSelected = false;
        QVector<double> few; ///< the values of a few selected objects
        BoxFigures selected; ///< of more
    };
    const QVector<Box> &boxes() const { return mBoxes; }
    /// The width of a box on the canvas.
    double boxWidth() const;

protected:
    void load() override;
    void markSelected() override;
    bool shows(int object) const override;
    QVector<unsigned int> objectsWithin(const QPainterPath &region) override;
    GraphScale xScale() const override;

private:
    class Boxes;
    double xOf(const Box &box) const;
    void chooseTicks();

    QVector<Box> mBoxes;
    double mHalf = 0.5; ///< of a box, in units of the axis
    QString mOneTime;   ///< what stands below the only box; empty for several
};

} // namespace meridor
