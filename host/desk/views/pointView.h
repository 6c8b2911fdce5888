// SPDX-License-Identifier: MIT
/// A graph with a point for each object, the line fitted to all points and that of the selected ones.
#pragma once
#include <QVector>
#include <vector>
#include "core/plot/plotValues.h"
#include "desk/views/graphView.h"

namespace meridor {

class PointsItem;

class PointView : public GraphView {
    Q_OBJECT
public:
    PointView(Workspace &workspace, int geography);

    int objectAt(const QPoint &pixel) const override;
    void drawMark(QPainter &painter, int object) override;
    /// The places of the objects, NaN for those that are not shown.
    const std::vector<QPointF> &places() const;
    const Line &line() const { return mLine; }
    /// Of the selected objects.
    const Line &selectedLine() const { return mSelectedLine; }

protected:
    struct Points {
        std::vector<QPointF> places; ///< by object
        QVector<int> classes;        ///< by object; empty: all are plain
        QVector<QColor> classColors;
    };
    /// See read().
    virtual Points points() = 0;
    /// The figures of a line, such as "r = 0.5".
    virtual QString lineText(const Line &line) const = 0;

    void read() final;
    void markSelected() final;
    void recolor() override;
    void setExporting(bool exporting) final;
    int objectLimit() const final;
    bool shows(int object) const final;
    QVector<unsigned int> objectsWithin(const QPainterPath &region) final;
    QRectF range() const { return mRange; }

private:
    class LineItem;

    PointsItem *mPoints; ///< of the plot
    LineItem *mLineItem;
    LineItem *mSelectedLineItem;
    QVector<int> mClasses;
    QVector<QColor> mClassColors;
    QRectF mRange;
    int mCount = 0;
    Line mLine;
    Line mSelectedLine;
};

} // namespace meridor
