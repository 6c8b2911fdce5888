// SPDX-License-Identifier: MIT
/// Two datasets of one geography against each other.
#pragma once
#include "desk/views/pointView.h"

namespace meridor {

class ScatterView final : public PointView {
    Q_OBJECT
public:
    /// @param xDataset  of the same geography as yDataset.
    ScatterView(Workspace &workspace, int xDataset, int yDataset);

    QString title() const override;
    QVector<int> datasets() const override { return {mX, mY}; }
    QString textOf(int object) override;
    QStringList commandLine(const QString &picture) const override;
    /// Colours the points by classes of the first dataset.
    /// @param limits  ascending, one more than colors; empty: no classes.
    void setClasses(const QVector<double> &limits, const QVector<QColor> &colors);

protected:
    Points points() override;
    QString lineText(const Line &line) const override;
    GraphScale xScale() const override;
    GraphScale yScale() const override;

private:
    int mX;
    int mY;
    QVector<double> mLimits;
    QVector<QColor> mClassColors;
};

} // namespace meridor
