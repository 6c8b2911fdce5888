// SPDX-License-Identifier: MIT
/// The values of objects against those of their neighbours: see moranPlaces().
#pragma once
#include "desk/views/pointView.h"

class QwtPlotMarker;

namespace meridor {

class MoranScatterView final : public PointView {
    Q_OBJECT
public:
    /// @param weights  a weight set of the dataset's geography.
    MoranScatterView(Workspace &workspace, int dataset, int weights);

    QString title() const override;
    QVector<int> datasets() const override { return {mDataset}; }
    int weights() const { return mWeights; }
    QString textOf(int object) override;
    QStringList commandLine(const QString &picture) const override;

protected:
    Points points() override;
    void recolor() override;
    QString lineText(const Line &line) const override;
    GraphScale xScale() const override;
    GraphScale yScale() const override;

private:
    int mDataset;
    int mWeights;
    double mMoran = 0;
    QwtPlotMarker *mCross; ///< of the plot
};

} // namespace meridor
