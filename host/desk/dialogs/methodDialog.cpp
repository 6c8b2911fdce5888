// SPDX-License-Identifier: MIT
#include "desk/dialogs/methodDialog.h"
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include "desk/dialogs/linkHistogram.h"
#include "desk/dialogs/modelPreview.h"
#include "desk/project/workspace.h"

namespace meridor {

MethodDialog::MethodDialog(Workspace &workspace, const MethodRegister &methods,
                           const Method &method, QWidget *parent)
    : QDialog(parent),
      mWorkspace(workspace),
      mMethods(methods),
      mMethod(method),
      mForm(new MethodForm(workspace, method)),
      mCommandLine(new QLineEdit),
      mReport(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("method ") + method.name);
    setWindowTitle(method.title);
    mCommandLine->setReadOnly(true);
    mCommandLine->setObjectName(QStringLiteral("command line"));
    mCommandLine->setAccessibleName(tr("The same as a command line"));
    mReport->setObjectName(QStringLiteral("report"));
    mReport->setAccessibleName(tr("Result"));
    mReport->setWordWrap(true);
    mReport->setTextFormat(Qt::PlainText);
    mReport->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    QPushButton *const run = buttons->addButton(tr("&Run"), QDialogButtonBox::ApplyRole);
    run->setObjectName(QStringLiteral("run"));
    connect(run, &QPushButton::clicked, this, &MethodDialog::execute);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    connect(buttons, &QDialogButtonBox::helpRequested, this,
            [this] { Q_EMIT helpWanted(mMethod.helpTopic); });

    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(mForm);
    if (method.name == QLatin1String("weights"))
        layout->addWidget(new LinkHistogram(workspace, *mForm), 1);
    if (method.name == QLatin1String("variogram"))
        layout->addWidget(new ModelPreview(workspace, *mForm), 1);
    layout->addWidget(new QLabel(tr("The same as a command line:")));
    mCommandLine->setMinimumWidth(fontMetrics().averageCharWidth() * 64);
    layout->addWidget(mCommandLine);
    layout->addWidget(mReport);
    layout->addWidget(buttons);
    run->setDefault(true); // the dialog does not know of a button that is outside of it
    mForm->setFocus();
    connect(mForm, &MethodForm::changed, this, &MethodDialog::showCommandLine);
    // What a failure says is shown here, where the user looks.
    connect(&workspace, &Workspace::told, mReport, &QLabel::setText);
    showCommandLine();
}

void MethodDialog::showCommandLine()
{
    if (!mWorkspace.isBusy())
        mCommandLine->setText(mMethods.invocation(mWorkspace, mMethod, mForm->parameters()));
    mCommandLine->setCursorPosition(0);
}

bool MethodDialog::execute()
{
    MethodReport report;
    if (!mMethods.execute(mWorkspace, mMethod, mForm->parameters(), report))
        return false;
    Q_EMIT executed(report);
    return true;
}

} // namespace meridor
