// SPDX-License-Identifier: MIT
// The rows of a vector geography as columns.
#include <QHash>
#include <limits>
#include <pybind11/stl.h>
#include "call.h"
#include "core/analysis/valueRows.h"
#include "core/formats/wellKnownBinary.h"
#include "core/project/progress.h"
#include "nouns.h"

namespace meridor::python {
namespace {

/// Collects each column as an array. Texts and times repeat, so they are codes of different texts.
class ColumnSink final : public TableSink {
public:
    struct Held {
        TableColumn column;
        std::vector<double> decimals;
        std::vector<qint64> integers;
        std::vector<int> codes;
        std::vector<quint8> missing;
        QHash<QString, int> codeOf;
        QStringList texts;
    };

    void begin(const QVector<TableColumn> &columns) override
    {
        mColumns.resize(static_cast<size_t>(columns.size()));
        for (size_t i = 0; i < mColumns.size(); ++i)
            mColumns[i].column = columns[static_cast<int>(i)];
    }
    void row(const std::vector<TableCell> &cells, const ShapeParts *shape) override
    {
        for (size_t i = 0; i < cells.size(); ++i)
            append(mColumns[i], cells[i]);
        if (shape)
            mShapes.push_back(*shape);
    }
    void end() override {}

    std::vector<Held> &columns() { return mColumns; }
    std::vector<ShapeParts> &shapes() { return mShapes; }

private:
    static void append(Held &held, const TableCell &cell)
    {
        const bool missing = isMissing(cell);
        switch (held.column.kind) {
        case CellKind::Decimal:
            held.decimals.push_back(missing ? std::numeric_limits<double>::quiet_NaN()
                                            : std::get<double>(cell));
            break;
        case CellKind::Integer:
            held.integers.push_back(missing ? 0 : std::get<qint64>(cell));
            held.missing.push_back(missing);
            break;
        default:
            held.codes.push_back(missing ? -1 : code(held, std::get<QString>(cell)));
        }
    }
    static int code(Held &held, const QString &text)
    {
        const auto known = held.codeOf.constFind(text);
        if (known != held.codeOf.constEnd())
            return *known;
        held.texts.append(text);
        return *held.codeOf.insert(text, held.texts.size() - 1);
    }

    std::vector<Held> mColumns;
    std::vector<ShapeParts> mShapes;
};

py::tuple columnOf(ColumnSink::Held &held)
{
    switch (held.column.kind) {
    case CellKind::Decimal:
        return py::make_tuple(held.column.name, "decimal", arrayOf(std::move(held.decimals)),
                              py::none());
    case CellKind::Integer:
        return py::make_tuple(held.column.name, "integer", arrayOf(std::move(held.integers)),
                              arrayOf(std::move(held.missing)).attr("view")("bool"));
    default:
        return py::make_tuple(held.column.name,
                              held.column.kind == CellKind::Text ? "text" : "time",
                              arrayOf(std::move(held.codes)), listOf(held.texts));
    }
}

/// @param at  one row for each object that exists at this time; None: a row for each span of time.
/// @param shapes  whether rows have shapes and end where they change.
/// @return the columns as (name, kind, values, mask or texts), and the shapes as well-known binary.
py::tuple rows(int geography, const std::vector<int> &datasets, const py::iterable &parts,
               std::optional<qint64> at, bool shapes, std::optional<int> realization,
               const py::object &progress)
{
    RowPlan plan;
    plan.geography = geography;
    plan.datasets = QVector<int>(datasets.begin(), datasets.end());
    plan.parts = textsOf(parts);
    plan.at = at;
    plan.shapes = shapes;
    plan.realization = realization;
    ColumnSink sink;
    std::vector<QByteArray> wkb = atLength(progress, [&] {
        const ValueRows all(plan);
        const Progress bar("Reading", "Reading the values...");
        all.pass(sink, bar.part(0, 100));
        std::vector<QByteArray> images;
        for (const ShapeParts &shape : sink.shapes())
            images.push_back(wellKnownBinary(shape, all.shapeKind()));
        return images;
    });
    py::list columns;
    for (ColumnSink::Held &held : sink.columns())
        columns.append(columnOf(held));
    py::list images(wkb.size());
    for (size_t i = 0; i < wkb.size(); ++i)
        images[i] = wkb[i].isEmpty()
                        ? py::object(py::none())
                        : py::bytes(wkb[i].constData(), static_cast<size_t>(wkb[i].size()));
    return py::make_tuple(columns, images);
}

} // namespace

void addRows(py::module_ &module)
{
    module.def("rows", &rows, py::arg("geography"), py::arg("datasets"), py::arg("parts"),
               py::arg("at"), py::arg("shapes"), py::arg("realization"), py::arg("progress"));
}

} // namespace meridor::python
