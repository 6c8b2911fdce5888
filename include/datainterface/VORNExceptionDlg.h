// SPDX-License-Identifier: MIT
/// The dialog that reports a broken internal condition and offers to mail the details to the
/// maintainers.
#pragma once
#include <QDialog>
#include <QString>
#include <memory>
#include "datainterface/export.h"

QT_BEGIN_NAMESPACE
namespace Ui {
class VORNExceptionDlgBase;
}
QT_END_NAMESPACE

/// Modal; sending opens the user's mail program with the text in it.
class DATAINTERFACE_EXPORT VORNExceptionDlg : public QDialog {
    Q_OBJECT
public:
    /// @param text     replaces the sentence at the top.
    /// @param what     the failure's what(): the subject of the mail.
    /// @param details  shown in full; the body of the mail.
    VORNExceptionDlg(const QString &text, const QString &what, const QString &details);
    ~VORNExceptionDlg() override;

private Q_SLOTS:
    void on_sendButton_clicked();

private:
    const std::unique_ptr<Ui::VORNExceptionDlgBase> mForm;
    const QString mWhat;
    const QString mDetails;
};
