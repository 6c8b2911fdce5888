// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QProgressDialog>
#include <QTimer>
#include <QtTest>
#include "datainterface/GeographyAPI.h"
#include "datainterface/PointTreeAPI.h"
#include "datainterface/VORN_Progress.h"
#include "frame/frameState.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

class TestProgress : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void makesOneModalBar();
    void mapsNestedSections();
    void aTypicalCallerTilesTheBar();
    void cancelArrivesWithTheEvents();
    void aSlotMayCloseTheBarDuringAReport();
    void aCancelEndsQueries();
    void misuseFails();
    void testingNeedsNoBar();
};

void TestProgress::cleanup()
{
    datainterface::setTesting(false);
    VORN_Progress::Close();
    QVERIFY(!progressBar());
}

void TestProgress::makesOneModalBar()
{
    {
        VORN_Progress progress("Export", "Exporting datasets...", "Stop");
        const QProgressDialog &bar = *progressBar();
        QCOMPARE(bar.windowTitle() + '|' + bar.labelText(),
                 QString("Export|Exporting datasets..."));
        QCOMPARE(QVector<int>({bar.minimum(), bar.maximum(), bar.minimumDuration()}),
                 QVector<int>({0, 100, 500}));
        QCOMPARE(answers({bar.isModal(), bar.isVisible()}), "yy");
        const auto hints = Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
        QCOMPARE(bar.windowFlags() & (hints | Qt::WindowCloseButtonHint), hints);
        QCOMPARE(raisedText([] { VORN_Progress second("a", "b", "c"); }),
                 QString("Progress bar already exists"));
        QVERIFY(VORN_Progress::UsingProgressBar());
    }
    QVERIFY(!VORN_Progress::UsingProgressBar());
}

void TestProgress::mapsNestedSections()
{
    const auto shown = [](const QList<QPair<int, int>> &sections, int percent) {
        VORN_Progress progress("t", "l", "c");
        for (int i = 0; i < sections.size(); ++i) {
            if (i > 0)
                VORN_Progress::PushProgressBarSection();
            VORN_Progress::SetProgressBarSubSection(sections[i].first, sections[i].second);
        }
        VORN_Progress::UpdateProgress(percent, nullptr);
        return progressBar()->value();
    };
    QCOMPARE(shown({{0, 100}}, 42), 42);
    QCOMPARE(shown({{0, 100}}, 29), 28); // 100 * (29 * 0.01) = 28.999...
    QCOMPARE(shown({{50, 100}, {0, 50}}, 50), 62);
    QCOMPARE(shown({{10, 90}, {50, 75}, {20, 30}}, 99), 55);
    QCOMPARE(shown({{30, 30}, {0, 100}}, 77), 30);
}

void TestProgress::aTypicalCallerTilesTheBar()
{
    VORN_Progress progress("t", "l", "c");
    VORN_Progress::SetProgressBarSubSection(0, 40);
    VORN_Progress::PushProgressBarSection();
    VORN_Progress::UpdateProgress(50, "inner");
    QCOMPARE(progressBar()->value(), 20);
    VORN_Progress::PopProgressBarSection();
    VORN_Progress::SetNextProgressBarSubSection(70);
    VORN_Progress::UpdateProgress(0, nullptr);
    QCOMPARE(progressBar()->value(), 40);
    VORN_Progress::UpdateProgress(100, nullptr);
    QCOMPARE(progressBar()->value(), 70);
    QCOMPARE(progressBar()->labelText(), QStringLiteral("inner"));
    VORN_Progress::UpdateProgress(-1, "x"); // the text alone
    QCOMPARE(progressBar()->value(), 70);
    QCOMPARE(progressBar()->labelText(), QStringLiteral("x"));
}

void TestProgress::cancelArrivesWithTheEvents()
{
    VORN_Progress progress("t", "l", "c");
    QVERIFY(VORN_Progress::CheckForCancel(0, nullptr));
    QTimer::singleShot(0, progressBar(), [] { progressBar()->cancel(); });
    QVERIFY(!VORN_Progress::UpdateProgress(10, nullptr));
    QVERIFY(!VORN_Progress::UpdateProgress(11, nullptr)); // stays cancelled
    QVERIFY(!VORN_Progress::CheckForCancel(100, "ignored"));
    QVERIFY(VORN_Progress::ProgressBarCanceled());
    VORN_Progress::Close();

    VORN_Progress second("t", "l", "c");
    VORN_Progress::SetProgressButtonText("Skip", true); // resets the bar
    QTimer::singleShot(0, progressBar(), [] { progressBar()->cancel(); });
    QVERIFY(!VORN_Progress::UpdateProgress(10, nullptr));
    QVERIFY(VORN_Progress::UpdateProgress(20, nullptr)); // the next step goes on
    VORN_Progress::SetProgressButtonText("Cancel", false);
    QVERIFY(!progressBar()->autoClose());
}

void TestProgress::aSlotMayCloseTheBarDuringAReport()
{
    VORN_Progress progress("t", "l", "c");
    QTimer::singleShot(0, [] { VORN_Progress::Close(); });
    QVERIFY(VORN_Progress::UpdateProgress(10, nullptr));
    QVERIFY(!VORN_Progress::UsingProgressBar());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestProgress::aCancelEndsQueries()
{
    TestModel model;
    constexpr PT_RotationMatrix kPlain{1, 0, 0, 1};
    const int points = addPoints(600);
    const int grid = addGrid(30, 30);
    const QVector<QPair<QPointF, int>> pairs(600, {QPointF(1, 1), 1});
    QVector<QVector<neighborDatum>> neighbors;
    for (const bool isCanceled : {false, true}) {
        const InCase inIsCanceled(isCanceled);
        VORN_Progress progress("t", "l", "c");
        if (isCanceled)
            progressBar()->cancel();
        for (const int count : {1, 20, 600}) // small trees see a cancel too
            QCOMPARE(VORN_CreatePointTreeFromPoints(pairs.mid(0, count), kPlain) < 0, isCanceled);
        QCOMPARE(VORN_CreatePointTreeFromCentroids(points, 5, kPlain) < 0, isCanceled);
        QCOMPARE(VORN_CreatePointTreeFromCentroids(grid, 5, kPlain) < 0, isCanceled);
        QVERIFY(isCanceled
                || progressBar()->labelText() == QLatin1String("Building point tree (96%)..."));
        QVERIFY(VORN_RangeObjectQuery(points, points, 5, 0, neighbors, false));
        QCOMPARE(VORN_RangeObjectQuery(points, points, 5, 0, neighbors, true), !isCanceled);
        QCOMPARE(VORN_NearestNeighborObjectQuery(points, points, 5, 1, neighbors, true),
                 !isCanceled);
    }
}

void TestProgress::misuseFails()
{
    using Bar = VORN_Progress;
    const QStringList texts{raisedText([] { Bar::SetProgressText("x"); }),
                            raisedText([] { Bar::SetProgressButtonText("x", true); }),
                            raisedText([] { Bar::UpdateProgress(1, nullptr); }),
                            raisedText([] { Bar::SetProgressBarSubSection(0, 1); }),
                            raisedText([] { Bar::SetNextProgressBarSubSection(1); }),
                            raisedText([] { Bar::PushProgressBarSection(); }),
                            raisedText([] { Bar::PopProgressBarSection(); }),
                            raisedText([] { Bar::ProgressBarCanceled(); })};
    for (const QString &text : texts)
        QCOMPARE(text, QString("Progress bar has not been created"));
    QVERIFY(Bar::CheckForCancel(1, nullptr));
    Bar::Close();
    const auto badRange = [] { Bar::SetProgressBarSubSection(2, 1); };
    QCOMPARE(raisedText(badRange), QString("lower <= upper"));
    Bar progress("t", "l", "c");
    QCOMPARE(raisedText(badRange), QString("lower <= upper"));
    Bar::PushProgressBarSection();
    Bar::PopProgressBarSection();
    QCOMPARE(raisedText([] { Bar::PopProgressBarSection(); }), QString("Unmatched section pop"));
}

void TestProgress::testingNeedsNoBar()
{
    datainterface::setTesting(true);
    VORN_Progress progress("t", "l", "c");
    QVERIFY(!progressBar());
    QVERIFY(VORN_Progress::UpdateProgress(10, "x"));
    QVERIFY(VORN_Progress::SetProgressBarSubSection(2, 1));
    QVERIFY(VORN_Progress::PopProgressBarSection());
}

QTEST_MAIN(TestProgress)
#include "tst_Progress.moc"
