// SPDX-License-Identifier: MIT
#include "desk/dialogs/importDialog.h"
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "desk/dialogs/screenSize.h"
#include "desk/project/actionLog.h"
#include "desk/project/importLine.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

const QString kUntilNext = QStringLiteral("next");

QString chosenField(const QComboBox *choice)
{
    return choice->currentData().toString();
}

void setChoices(QComboBox *choice, const QString &none, const QStringList &fields,
                const QString &chosen)
{
    choice->clear();
    choice->addItem(none, QString());
    for (const QString &field : fields)
        choice->addItem(field, field);
    choice->setCurrentIndex(std::max(0, choice->findData(chosen)));
}

} // namespace

ImportDialog::ImportDialog(Workspace &workspace, QWidget *parent)
    : QDialog(parent),
      mWorkspace(workspace),
      mForm(new QFormLayout),
      mFile(new QLabel),
      mCommandLine(new QLineEdit),
      mTrouble(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("importDialog"));
    setWindowTitle(tr("Import"));
    mFile->setTextFormat(Qt::PlainText);
    mFile->setWordWrap(true);
    makeForm();
    mCommandLine->setReadOnly(true);
    mCommandLine->setObjectName(QStringLiteral("importCommandLine"));
    mCommandLine->setAccessibleName(tr("The same as a command line"));
    mTrouble->setObjectName(QStringLiteral("importTrouble"));
    mTrouble->setAccessibleName(tr("What went wrong"));
    mTrouble->setWordWrap(true);
    mTrouble->setTextFormat(Qt::PlainText);
    mTrouble->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton *const run = buttons->addButton(tr("&Import"), QDialogButtonBox::AcceptRole);
    run->setObjectName(QStringLiteral("importRun"));
    connect(run, &QPushButton::clicked, this, &ImportDialog::import);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *const inside = new QWidget;
    inside->setLayout(mForm);
    auto *const scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setAccessibleName(tr("What is imported, and how"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(inside);
    auto *const column = new QVBoxLayout(this);
    column->addWidget(mFile);
    column->addWidget(scroll, 1);
    column->addWidget(new QLabel(tr("The same as a command line:")));
    column->addWidget(mCommandLine);
    column->addWidget(mTrouble);
    column->addWidget(buttons);
    run->setDefault(true); // the dialog does not know of a button that is outside of it
    mName->setFocus();
    const int em = fontMetrics().height();
    resize(boundedToScreen(*this, QSize(40 * em, 44 * em)));
}

QComboBox *ImportDialog::addChoice(const char *name, const QString &label, const QString &tip)
{
    auto *const choice = new QComboBox;
    choice->setObjectName(QLatin1String(name));
    choice->setAccessibleName(label);
    choice->setToolTip(tip);
    connect(choice, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &ImportDialog::showCommandLine);
    mForm->addRow(label, choice);
    return choice;
}

QLineEdit *ImportDialog::addText(const char *name, const QString &label, const QString &tip)
{
    auto *const text = new QLineEdit;
    text->setObjectName(QLatin1String(name));
    text->setAccessibleName(label);
    text->setToolTip(tip);
    text->setPlaceholderText(tip);
    connect(text, &QLineEdit::textChanged, this, &ImportDialog::showCommandLine);
    mForm->addRow(label, text);
    return text;
}

QCheckBox *ImportDialog::addFlag(const char *name, const QString &text, const QString &tip)
{
    auto *const flag = new QCheckBox(text);
    flag->setObjectName(QLatin1String(name));
    flag->setToolTip(tip);
    connect(flag, &QCheckBox::toggled, this, &ImportDialog::showCommandLine);
    mForm->addRow(QString(), flag);
    return flag;
}

void ImportDialog::makeForm()
{
    mLayer = addChoice("importLayer", tr("&Layer"), tr("The layer of the file"));
    connect(mLayer, qOverload<int>(&QComboBox::activated), this,
            [this] { load(mGuess.options.map, chosenField(mLayer)); });
    mName = addText("importName", tr("&Name"), tr("Of the geography; that of the layer"));
    mKey = addChoice("importKey", tr("&Key"),
                     tr("The field that identifies an object; rows with the same key are one"));
    mX = addChoice("importX", tr("&x"), tr("The field of the x coordinate of a table of points"));
    mY = addChoice("importY", tr("&y"), tr("The field of the y coordinate"));
    mCrs = addText("importCrs", tr("&Coordinate system"),
                   tr("Such as EPSG:4326, in place of the file's"));
    mStart =
        addChoice("importStart", tr("&Start"), tr("The field with the start of a row's existence"));
    mEnd = addChoice("importEnd", tr("&End"), tr("The field with its end"));
    mTimes = addChoice("importTimes", tr("&Times"), tr("How times are read"));
    for (const char *const format : {"auto", "number", "date", "date-time", "time"})
        mTimes->addItem(QLatin1String(format), QLatin1String(format));
    mPattern = addText("importPattern", tr("&Pattern of times"), tr("Such as d.M.yyyy"));
    mBandsAreTimes = addFlag("importBands", tr("The &bands are times of one dataset"),
                             tr("Otherwise each band is a dataset that does not change"));
    mFields = new QListWidget;
    mFields->setObjectName(QStringLiteral("importFields"));
    mFields->setAccessibleName(tr("Fields that become datasets"));
    mFields->setMaximumHeight(9 * fontMetrics().height());
    connect(mFields, &QListWidget::itemChanged, this, &ImportDialog::showCommandLine);
    mForm->addRow(tr("&Fields"), mFields);
    mTables = addText("importTables", tr("&Joined tables"),
                      tr("Files whose fields are joined by key, separated by semicolons"));
    auto *const browse = new QToolButton;
    browse->setObjectName(QStringLiteral("importBrowse"));
    browse->setText(tr("Add a table..."));
    browse->setAccessibleName(tr("Add a table"));
    connect(browse, &QToolButton::clicked, this, &ImportDialog::browseTables);
    mForm->addRow(QString(), browse);
    mSeries = new QPlainTextEdit;
    mSeries->setObjectName(QStringLiteral("importSeries"));
    mSeries->setAccessibleName(tr("Series: datasets over time from several fields"));
    mSeries->setPlaceholderText(tr("One a line, such as income=1929..2009 or births=BIR*"));
    mSeries->setTabChangesFocus(true);
    mSeries->setMaximumHeight(4 * fontMetrics().height());
    connect(mSeries, &QPlainTextEdit::textChanged, this, &ImportDialog::showCommandLine);
    mForm->addRow(tr("Se&ries"), mSeries);
    mDecimal = addChoice("importDecimal", tr("&Decimal separator"), tr("Of numbers in texts"));
    mDecimal->addItem(tr("point"), QString());
    mDecimal->addItem(tr("comma"), QStringLiteral(","));
    mEncoding = addText("importEncoding", tr("Encodin&g"), tr("Of texts, such as Windows-1252"));
    mDataset = addText("importDataset", tr("&Dataset"), tr("Its name; that of the file"));
    mNoData = addText("importNoData", tr("No &data"),
                      tr("The cell that means no data, or none, in place of the file's"));
    mRealizations = addText("importRealizations", tr("&Realizations"),
                            tr("The dimension whose places are realizations"));
    mSnap = addText("importSnap", tr("S&nap"),
                    tr("Vertices within this distance, in map units, coincide for borders"));
}

bool ImportDialog::load(const QString &file, const QString &layer)
{
    mTrouble->clear();
    ImportGuess guess;
    QString trouble;
    const auto told = connect(&mWorkspace, &Workspace::told, this,
                              [&trouble](const QString &text) { trouble = text; });
    const bool isRead = mWorkspace.look([&] { guess = guessImport(file, layer); });
    disconnect(told);
    mFile->setText(QDir::toNativeSeparators(file));
    if (!isRead) {
        mTrouble->setText(trouble);
        return false;
    }
    mGuess = guess;
    fill();
    return true;
}

void ImportDialog::showRow(QWidget *control, bool isShown)
{
    control->setVisible(isShown);
    if (QWidget *const label = mForm->labelForField(control))
        label->setVisible(isShown);
}

void ImportDialog::fill()
{
    mIsFilling = true;
    const ImportOptions &options = mGuess.options;
    const bool isMap = mGuess.form == SourceForm::Shapes || mGuess.form == SourceForm::Table;
    const bool isGrid = mGuess.form == SourceForm::Grid;
    const bool isCube = mGuess.form == SourceForm::Cube;
    mLayer->clear();
    for (const QString &layer : mGuess.layers)
        mLayer->addItem(layer, layer);
    mLayer->setCurrentIndex(std::max(0, mLayer->findData(options.layer)));
    setChoices(mKey, tr("none: each row is an object"), mGuess.fields, options.key);
    setChoices(mX, tr("none"), mGuess.fields, options.xColumn);
    setChoices(mY, tr("none"), mGuess.fields, options.yColumn);
    mCrs->setText(options.projection);
    setChoices(mStart, tr("none"), isMap ? mGuess.fields : QStringList(), options.start);
    setChoices(mEnd, tr("none"), isMap ? mGuess.fields : QStringList(), options.end);
    mEnd->insertItem(1, tr("the object's next row"), kUntilNext);
    mEnd->setCurrentIndex(std::max(0, mEnd->findData(options.end)));
    mPattern->setText(options.timePattern);
    mDecimal->setCurrentIndex(std::max(0, mDecimal->findData(options.decimal)));
    mBandsAreTimes->setChecked(options.bandsAreTimes);
    mSeries->setPlainText(options.series.join(QLatin1Char('\n')));
    mFields->clear();
    for (int i = 0; i < mGuess.fields.size(); ++i) {
        const QString name = mGuess.fields[i];
        auto *const item =
            new QListWidgetItem(name.isEmpty() ? tr("band %1").arg(i + 1) : name, mFields);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
        item->setData(Qt::UserRole, name);
    }
    showRow(mLayer, mGuess.layers.size() > 1);
    for (QWidget *const control :
         {static_cast<QWidget *>(mKey), static_cast<QWidget *>(mStart),
          static_cast<QWidget *>(mTables), static_cast<QWidget *>(mSeries),
          static_cast<QWidget *>(mDecimal), static_cast<QWidget *>(mEncoding),
          static_cast<QWidget *>(mSnap)})
        showRow(control, isMap);
    findChild<QToolButton *>(QStringLiteral("importBrowse"))->setVisible(isMap);
    showRow(mX, mGuess.form == SourceForm::Table);
    showRow(mY, mGuess.form == SourceForm::Table);
    showRow(mEnd, isMap || isCube);
    showRow(mBandsAreTimes, isGrid);
    showRow(mDataset, isGrid);
    showRow(mNoData, isGrid || isCube);
    showRow(mRealizations, isCube);
    mIsFilling = false;
    showCommandLine();
}

ImportOptions ImportDialog::options() const
{
    ImportOptions options;
    options.map = mGuess.options.map;
    const bool isMap = mGuess.form == SourceForm::Shapes || mGuess.form == SourceForm::Table;
    const bool isGrid = mGuess.form == SourceForm::Grid;
    options.name = mName->text().trimmed();
    options.projection = mCrs->text().trimmed();
    options.times = chosenField(mTimes);
    options.timePattern = mPattern->text();
    QStringList checked;
    for (int i = 0; i < mFields->count(); ++i)
        if (mFields->item(i)->checkState() == Qt::Checked)
            checked.append(mFields->item(i)->data(Qt::UserRole).toString());
    options.bandsAreTimes = isGrid && mBandsAreTimes->isChecked();
    const bool choosesFields = !isGrid || !options.bandsAreTimes;
    if (choosesFields && checked.isEmpty() && isMap)
        options.attributes = false;
    else if (choosesFields && checked.size() < mFields->count())
        options.fields = checked;
    if (!isMap) {
        options.noData = mNoData->text().trimmed();
        options.dataset = isGrid ? mDataset->text().trimmed() : QString();
        options.realizations = isGrid ? QString() : mRealizations->text().trimmed();
        options.end = isGrid ? QString() : chosenField(mEnd);
        return options;
    }
    if (mGuess.layers.size() > 1)
        options.layer = chosenField(mLayer);
    options.key = chosenField(mKey);
    options.start = chosenField(mStart);
    options.end = chosenField(mEnd);
    if (mGuess.form == SourceForm::Table) {
        options.xColumn = chosenField(mX);
        options.yColumn = chosenField(mY);
    }
    const QStringList tables = mTables->text().split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &table : tables)
        options.tables.append(table.trimmed());
    const QStringList series = mSeries->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : series)
        if (!line.trimmed().isEmpty())
            options.series.append(line.trimmed());
    options.decimal = chosenField(mDecimal);
    options.encoding = mEncoding->text().trimmed();
    options.snap = mSnap->text().toDouble();
    return options;
}

void ImportDialog::showCommandLine()
{
    if (mIsFilling)
        return;
    const bool append = !mWorkspace.path().isEmpty() || !geographyIds().isEmpty();
    mCommandLine->setText(commandText(importLine(options(), mWorkspace.commandPath(), append)));
    mCommandLine->setCursorPosition(0);
}

void ImportDialog::browseTables()
{
    const QString folder = QFileInfo(mGuess.options.map).absolutePath();
    QStringList tables = QFileDialog::getOpenFileNames(this, tr("Tables to join"), folder);
    if (tables.isEmpty())
        return;
    if (!mTables->text().isEmpty())
        tables.prepend(mTables->text());
    mTables->setText(tables.join(QLatin1String("; ")));
}

int ImportDialog::import()
{
    QString trouble;
    const auto told = connect(&mWorkspace, &Workspace::told, this,
                              [&trouble](const QString &text, bool isTrouble) {
                                  if (isTrouble)
                                      trouble = text;
                              });
    const int geography = mWorkspace.import(options());
    disconnect(told);
    mTrouble->setText(geography < 0 ? trouble : QString());
    if (geography < 0)
        return geography;
    Q_EMIT imported(geography);
    close();
    return geography;
}

} // namespace meridor
