// SPDX-License-Identifier: MIT
#include "datainterface/VORNExceptionDlg.h"
#include <QDesktopServices>
#include <QStyle>
#include <QUrl>
#include "datainterface/VersionAPI.h"
#include "frame/versionText.h"
#include "ui_VORNExceptionDlgBase.h"

namespace {

QString bugReportAddress()
{
    return QStringLiteral(DATAINTERFACE_BUG_REPORT_ADDRESS);
}

// Percent-encodes the text of a mailto address. Demangled names contain "&" and "#", either of
// which would end the body.
QString escaped(QString text)
{
    text.replace(QLatin1Char('%'), QLatin1String("%25"));
    text.replace(QLatin1Char(' '), QLatin1String("%20"));
    text.replace(QLatin1Char('"'), QLatin1String("%22"));
    text.replace(QLatin1Char('&'), QLatin1String("%26"));
    text.replace(QLatin1Char('#'), QLatin1String("%23"));
    text.replace(QLatin1Char('\n'), QLatin1String("%0A"));
    return text;
}

} // namespace

VORNExceptionDlg::VORNExceptionDlg(const QString &text, const QString &what, const QString &details)
    : mForm(std::make_unique<Ui::VORNExceptionDlgBase>()), mWhat(what), mDetails(details)
{
    mForm->setupUi(this);
    mForm->errorIcon->setPixmap(style()->standardPixmap(QStyle::SP_MessageBoxCritical));
    mForm->errorLabel->setText(text);
    mForm->linkLabel->setText(mForm->linkLabel->text().arg(bugReportAddress()));
    mForm->infoTextEdit->setPlainText(details);
}

VORNExceptionDlg::~VORNExceptionDlg() = default;

void VORNExceptionDlg::on_sendButton_clicked()
{
    const QString body =
        QLatin1String("If possible please describe what steps led up to the exception you observed:"
                      "%0A%0A%0A%0A%0A")
        + escaped(mDetails);
    const QString url =
        QLatin1String("mailto:") + bugReportAddress() + QLatin1String("?subject=") + applicationName
        + QLatin1Char('(') + QLatin1String(datainterface::kVersionText)
        + QLatin1String(")%20exception:%20") + escaped(mWhat) + QLatin1String("&body=") + body;
    QDesktopServices::openUrl(QUrl(url));
    accept();
}
