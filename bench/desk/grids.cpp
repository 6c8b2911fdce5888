// SPDX-License-Identifier: MIT
// A grid of 10,000 x 10,000 decimals in a window against a public call for each cell shown.
#include <QPainter>
#include <cmath>
#include "datainterface/DataAPI.h"
#include "datainterface/DataId.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"
#include "desk/draw/gridColors.h"
#include "desk/draw/gridImage.h"
#include "desk/scenes.h"
#include "ratios.h"

namespace scenes {
namespace {

using namespace meridor;

constexpr int kSide = 10000;

int addTerrain()
{
    const Interval when{0, 10, true, true};
    const int geography =
        VORN_CreateNewRasterGeography("terrain", kSide, kSide, QRectF(0, 0, kSide, kSide), when,
                                      TF_Integer, QString(), QString());
    const int id = VORN_NewRasterDataset(geography, "height", RasterDecimalType, 1, 32, QString());
    QVector<float> cells(kSide * kSide);
    for (int i = 0; i < cells.size(); ++i)
        cells[i] =
            i % 97 == 0 ? -9999.0f : float(i / kSide % 1700 + i % kSide % 1300) + float(i % 7);
    VORN_AddRasterValues(id, 0, when, cells, -9999.0f, true, false);
    return id;
}

} // namespace

void gridRows()
{
    ratios::head("grids");
    const int id = addTerrain();
    MDataSource &source =
        *static_cast<MGeoData *>(VORN_GetGeography(DataId(id).GeoId()))->GetDataSource();
    source.CheckOutDataset(id, 0, 0);
    const ViewTransform view = ViewTransform::fit(QRectF(0, 0, kSide, kSide), kWindow);
    const ColorRule rule = sevenClasses();
    const QVector<double> breaks{0, 500, 1000, 1500, 2000, 2500, 3000, 3500};
    const GridColors colors = GridColors::ofClasses(breaks, rule.classes, rule.missing);
    GridImage grid;
    QImage ours = canvas();
    QImage theirs = canvas();
    const auto cellByCell = [&] {
        for (int y = 0; y < kWindow.height(); ++y) {
            auto *out = reinterpret_cast<QRgb *>(theirs.scanLine(y));
            for (int x = 0; x < kWindow.width(); ++x) {
                const QPointF place = view.toMap(QPointF(x + 0.5, y + 0.5));
                const auto column = std::floor(place.x());
                const auto row = std::floor(kSide - place.y());
                if (column < 0 || column >= kSide || row < 0 || row >= kSide)
                    continue;
                double value = NAN;
                VORN_GetRasterValue(id, 0, unsigned(column), unsigned(row), kTime, value);
                out[x] = colors.of(value);
            }
        }
    };
    const auto allAsDecimals = [id] {
        QVector<double> values;
        MissingFlag flag;
        VORN_GetRasterDataAsDecimal(id, 0, kTime, values, flag);
        benchmark::DoNotOptimize(values.data());
    };
    const auto show = [&](RasterSampling sampling) {
        grid.load(id, 0, kTime, view, sampling);
        grid.paint(colors, ours);
    };
    const auto nearest = ratios::bestInTurns(
        9, 1, [&] { show(RasterSampling::Nearest); }, cellByCell);
    ratios::row("10,000 x 10,000 grid, nearest cells", nearest.first / 1e6,
                "VORN_GetRasterValue a cell", nearest.second / 1e6, 0.15, "ms");
    const auto means = ratios::bestInTurns(
        3, 1, [&] { show(RasterSampling::Mean); }, allAsDecimals);
    ratios::row("the same, means of all cells", means.first / 1e6, "all cells as decimals",
                means.second / 1e6, 0.25, "ms");
    source.CheckInDataset(id, 0, 0);
}

} // namespace scenes
