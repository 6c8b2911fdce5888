// SPDX-License-Identifier: MIT
/// Datasets that are dragged from the contents to a view.
#pragma once

class QMimeData;

namespace meridor {

constexpr const char *kDatasetMime = "application/x-meridor-dataset";

/// The caller owns the data, which holds the dataset's id as decimal text.
QMimeData *mimeOf(int dataset);
/// -1 if the data hold no dataset of the open project.
int datasetOf(const QMimeData *data);

} // namespace meridor
