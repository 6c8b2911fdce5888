// SPDX-License-Identifier: MIT
#include <QTemporaryDir>
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"
#include "support/support.h"
class TestTimeContainers : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { InitializeDataManager(mDir.path(), 1000); }
    void cleanupTestCase() { ClearDataManager(); }
    void smoke()
    {
        TimeSliceData<double> a({1, 2, 3}, {1});
        QCOMPARE(a.GetValue(2), 3.0);
        a.SetValue(1, 7);
        QVERIFY(!a.IsMissing(1));
        TimeSliceData<double> b(a);
        QCOMPARE(b.GetValues(), (QVector<double>{1, 7, 3}));
    }

private:
    QTemporaryDir mDir;
};
QTEST_GUILESS_MAIN(TestTimeContainers)
#include "tst_timeContainers.moc"
