// SPDX-License-Identifier: MIT
#include "desk/views/saveName.h"
#include <QFileDialog>

namespace meridor {

QString askSaveName(QWidget *parent, const QString &title, const QString &filters)
{
    QFileDialog dialog(parent, title);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    const auto follow = [&dialog](const QString &filter) {
        dialog.setDefaultSuffix(
            filter.section(QLatin1String("(*."), 1).section(QLatin1Char(')'), 0, 0));
    };
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, follow);
    dialog.setNameFilters(filters.split(QStringLiteral(";;")));
    follow(dialog.selectedNameFilter());
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace meridor
