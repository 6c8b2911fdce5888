// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QtTest>
#include "cli/program.h"
#include "support/oldProject.h"

/// What makes new datasets and geographies of those that are there.
class TestMeridorChanges : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void convertsValuesBothWays_data();
    void convertsValuesBothWays();
    void refusesConversionsOfNothing_data();
    void refusesConversionsOfNothing();
    void selectsByValueAndRange_data();
    void selectsByValueAndRange();
    void cutsGeographiesWithTheirValues();
    void upgradesProjectsOfAnyAge_data();
    void upgradesProjectsOfAnyAge();

private:
    /// "a=1 b=? c=7": what a dataset holds at a time, missing values left out.
    QString held(const QString &project, const QString &dataset, const QString &at) const;

    Workplace mPlace;
};

void TestMeridorChanges::initTestCase()
{
    mPlace.file("map.geojson", squares());
    mPlace.file("t.csv", "id,v2000,v2001,town\na,1.75,2.5,\xc5\x81\xc3\xb3"
                         "d\xc5\xba\nb,-4.25,5,\xc5\xbb\xc3\xb3"
                         "d\xc5\xba\nc,7,,\n");
    const Outcome outcome = mPlace.run({"import", "map.geojson", "p.vorn", "--key", "id", "--name",
                                        "land", "--table", "t.csv", "--series", "v=v2000..v2001"});
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
}

QString TestMeridorChanges::held(const QString &project, const QString &dataset,
                                 const QString &at) const
{
    QStringList texts;
    for (const char *object : {"a", "b", "c"}) {
        const QJsonArray values = mPlace.run({"series", project, dataset, object, "--json"})
                                      .json()
                                      .value("values")
                                      .toArray();
        for (const QJsonValue &value : values)
            if (value.toObject().value("time").toString() == at
                && !value.toObject().value("value").isNull())
                texts.append(QString(object) + '='
                             + value.toObject().value("value").toVariant().toString());
    }
    return texts.join(' ');
}

void TestMeridorChanges::convertsValuesBothWays_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("in2000");
    QTest::addColumn<QString>("in2001");
    const QString all = "a=1.75 b=-4.25 c=7";
    QTest::newRow("series") << QStringList{"--storage", "series"} << all << "a=2.5 b=5";
    QTest::newRow("toward zero") << QStringList{"--type", "integer"} << "a=1 b=-4 c=7"
                                 << "a=2 b=5";
    QTest::newRow("text") << QStringList{"--type", "text", "--decimals", "2"}
                          << "a=1.75 b=-4.25 c=7.00"
                          << "a=2.50 b=5.00";
    QTest::newRow("both") << QStringList{"--type", "text", "--decimals", "0", "--storage", "series"}
                          << "a=1 b=-4 c=7"
                          << "a=2 b=5";
}

void TestMeridorChanges::convertsValuesBothWays()
{
    QFETCH(QStringList, options);
    QFETCH(QString, in2000);
    QFETCH(QString, in2001);
    const Outcome outcome = mPlace.run(
        QStringList{"convert", "p.vorn", "v", "w", "--output", "w.vorn", "--overwrite"} + options);
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    QCOMPARE(held("w.vorn", "w", "2000"), in2000);
    QCOMPARE(held("w.vorn", "w", "2001"), in2001);
    const bool series = options.contains("series");
    const QStringList back{"convert", "w.vorn",    "w",
                           "x",       "--storage", series ? "slices" : "series"};
    QCOMPARE(mPlace.run(back).code, 0);
    QCOMPARE(held("w.vorn", "x", "2000"), in2000);
    QCOMPARE(held("w.vorn", "x", "2001"), in2001);
    // The passing dataset of a conversion in two steps is gone.
    const QJsonArray datasets = mPlace.run({"info", "w.vorn", "--json"})
                                    .json()
                                    .value("geographies")
                                    .toArray()[0]
                                    .toObject()
                                    .value("datasets")
                                    .toArray();
    QCOMPARE(datasets.size(), 5);
}

void TestMeridorChanges::refusesConversionsOfNothing_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("code");
    QTest::newRow("neither") << QStringList{"v", "w"} << 2;
    QTest::newRow("as it is") << QStringList{"v", "w", "--type", "decimal"} << 1;
    QTest::newRow("series of what holds for good")
        << QStringList{"town", "w", "--storage", "series"} << 1;
    QTest::newRow("name in use") << QStringList{"v", "town", "--type", "text"} << 1;
    QTest::newRow("no such dataset") << QStringList{"u", "w", "--type", "text"} << 1;
}

void TestMeridorChanges::refusesConversionsOfNothing()
{
    QFETCH(QStringList, words);
    QFETCH(int, code);
    const QByteArray before = mPlace.bytes("p.vorn");
    QCOMPARE(mPlace.run(QStringList{"convert", "p.vorn"} + words).code, code);
    QCOMPARE(mPlace.bytes("p.vorn"), before);
}

void TestMeridorChanges::selectsByValueAndRange_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("objects");
    QTest::newRow("range") << QStringList{"v", "--min", "1.75", "--max", "6", "--at", "2000"}
                           << QStringList{"a"};
    QTest::newRow("open range") << QStringList{"v", "--max", "5"} << QStringList{"a", "b"};
    QTest::newRow("negative numbers")
        << QStringList{"v", "--min=-9", "--max=-4", "--at", "2000"} << QStringList{"b"};
    QTest::newRow("values") << QStringList{"v", "--values", "7,1.75,8", "--at", "2000"}
                            << QStringList{"a", "c"};
    // Both names are the same bytes in Latin-1.
    QTest::newRow("text") << QStringList{"town", "--values",
                                         QString::fromUtf8("\xc5\x81\xc3\xb3"
                                                           "d\xc5\xba")}
                          << QStringList{"a"};
    QTest::newRow("a time without data")
        << QStringList{"v", "--min", "0", "--at", "1900"} << QStringList{};
}

void TestMeridorChanges::selectsByValueAndRange()
{
    QFETCH(QStringList, words);
    QFETCH(QStringList, objects);
    const Outcome outcome = mPlace.run(QStringList{"select", "p.vorn", "--json"} + words);
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    QStringList found;
    for (const QJsonValue &object : outcome.json().value("objects").toArray())
        found.append(object.toObject().value("object").toString());
    QCOMPARE(found, objects);
    QCOMPARE(mPlace.run({"select", "p.vorn", "town", "--min", "1"}).code, 1);
    QCOMPARE(mPlace.run({"select", "p.vorn", "v", "--values", "many"}).code, 2);
    QCOMPARE(mPlace.run({"select", "p.vorn", "v"}).code, 2);
}

void TestMeridorChanges::cutsGeographiesWithTheirValues()
{
    const Outcome cut = mPlace.run(
        {"subset", "p.vorn", "part", "--objects", "c,a", "--output", "s.vorn", "--json"});
    QVERIFY2(cut.code == 0, qPrintable(cut.err));
    QCOMPARE(cut.json().value("objects").toArray(), (QJsonArray{"a", "c"}));
    QCOMPARE(cut.json().value("parent").toString(), QString("land"));
    QCOMPARE(held("s.vorn", "part/v", "2000"), QString("a=1.75 c=7"));
    QCOMPARE(held("s.vorn", "part/v", "2001"), QString("a=2.5"));
    const QJsonArray geographies =
        mPlace.run({"info", "s.vorn", "--json"}).json().value("geographies").toArray();
    QCOMPARE(geographies.size(), 2);
    QCOMPARE(geographies[1].toObject().value("parent").toString(), QString("land"));
    QCOMPARE(geographies[1].toObject().value("bounds").toArray(), (QJsonArray{0, 0, 6, 1}));
    // What a choice asks for must all hold.
    const Outcome both =
        mPlace.run({"subset", "p.vorn", "one", "--objects", "a,b", "--where", "v", "--max", "0",
                    "--at", "2000", "--existing", "--output", "o.vorn", "--json"});
    QCOMPARE(both.json().value("objects").toArray(), QJsonArray{"b"});
    QCOMPARE(mPlace.run({"subset", "p.vorn", "none", "--where", "v", "--min", "99"}).code, 1);
    QCOMPARE(mPlace.run({"subset", "p.vorn", "land", "--objects", "a"}).code, 1);
    QCOMPARE(mPlace.run({"subset", "p.vorn", "all"}).code, 2);
}

void TestMeridorChanges::upgradesProjectsOfAnyAge_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("told");
    QTest::newRow("points alone") << 102000 << "1.02.000";
    QTest::newRow("with a grid") << 160004 << "1.60.004";
    QTest::newRow("half way") << 201044 << "2.01.044";
}

void TestMeridorChanges::upgradesProjectsOfAnyAge()
{
    QFETCH(int, version);
    QFETCH(QString, told);
    mPlace.file("old.vorn", oldProject::write(oldProject::Sample{version}));
    const Outcome outcome =
        mPlace.run({"upgrade", "old.vorn", "new.vorn", "--json", "--overwrite"});
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    QCOMPARE(outcome.json().value("version").toString(), told);
    const QJsonObject before = mPlace.run({"info", "old.vorn", "--json"}).json();
    const QJsonObject after = mPlace.run({"info", "new.vorn", "--json"}).json();
    QVERIFY(!before.value("geographies").toArray().isEmpty());
    QCOMPARE(after.value("geographies"), before.value("geographies"));
    // The present form is as it is.
    QCOMPARE(mPlace.run({"upgrade", "new.vorn", "again.vorn", "--overwrite"}).code, 0);
    QCOMPARE(mPlace.bytes("again.vorn"), mPlace.bytes("new.vorn"));
    mPlace.file("old.vorn", "no project");
    QCOMPARE(mPlace.run({"upgrade", "old.vorn", "new.vorn", "--overwrite"}).code, 1);
    QCOMPARE(mPlace.bytes("again.vorn"), mPlace.bytes("new.vorn"));
}

QTEST_GUILESS_MAIN(TestMeridorChanges)
#include "tst_MeridorChanges.moc"
