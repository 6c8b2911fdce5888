// SPDX-License-Identifier: MIT
/// The form of an import: what was recognised in the file, and the command line that does the same.
#pragma once
#include <QDialog>
#include "core/import/guessImport.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;

namespace meridor {

class Workspace;

/// Not modal: the project can be looked at beside it. A failure is shown in the form.
class ImportDialog : public QDialog {
    Q_OBJECT
public:
    ImportDialog(Workspace &workspace, QWidget *parent = nullptr);
    /// Fills the form with what the file holds. False after telling the user why it cannot be read.
    bool load(const QString &file, const QString &layer = QString());
    ImportOptions options() const;
    /// @return the new geography; -1 after the trouble is shown.
    int import();

Q_SIGNALS:
    void imported(int geography);

private:
    QComboBox *addChoice(const char *name, const QString &label, const QString &tip);
    QLineEdit *addText(const char *name, const QString &label, const QString &tip);
    QCheckBox *addFlag(const char *name, const QString &text, const QString &tip);
    void makeForm();
    void fill();
    void showRow(QWidget *control, bool isShown);
    void showCommandLine();
    void browseTables();

    Workspace &mWorkspace;
    ImportGuess mGuess;
    bool mIsFilling = true; ///< until the form is complete
    QFormLayout *mForm;
    QLabel *mFile;
    QComboBox *mLayer;
    QLineEdit *mName;
    QComboBox *mKey;
    QComboBox *mX;
    QComboBox *mY;
    QLineEdit *mCrs;
    QComboBox *mStart;
    QComboBox *mEnd;
    QComboBox *mTimes;
    QLineEdit *mPattern;
    QCheckBox *mBandsAreTimes;
    QListWidget *mFields;
    QLineEdit *mTables;
    QPlainTextEdit *mSeries;
    QComboBox *mDecimal;
    QLineEdit *mEncoding;
    QLineEdit *mDataset;
    QLineEdit *mNoData;
    QLineEdit *mRealizations;
    QLineEdit *mSnap;
    QLineEdit *mCommandLine;
    QLabel *mTrouble;
};

} // namespace meridor
