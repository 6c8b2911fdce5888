// SPDX-License-Identifier: MIT
/// The window of a table of objects.
#pragma once
#include "desk/views/viewFactory.h"
#include "desk/views/viewWindow.h"

class QAction;

namespace meridor {

class TableView;

class TableWindow final : public ViewWindow {
    Q_OBJECT
public:
    TableWindow(Workspace &workspace, int geography, QWidget *parent = nullptr);

    /// Null after its geography was removed.
    TableView *table() const;
    QString title() const override;
    /// Writes the values of all rows as a table, without their order, when the name ends in .csv, and
    /// a picture otherwise; the log has the line that writes the same.
    bool exportTo(const QString &file) override;
    /// The selected rows as they stand, or all; as text.
    void copyToClipboard() override;

    QJsonObject state() const override;
    void restore(const QJsonObject &state) override;

private:
    void askExportTable();
    bool exportTable(const QString &file);

    QAction *mSelectedFirst;
};

} // namespace meridor
