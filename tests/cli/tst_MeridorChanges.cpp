// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QtTest>
#include "cli/program.h"
#include "support/oldProject.h"

/// What makes new datasets and geographies of those that are there.
class TestMeridorChanges : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mPlace.file("map.geojson", squares());
        mPlace.file("t.csv", "id,v2000,v2001,town\na,1.75,2.5,\xc5\x81\xc3\xb3"
                             "d\xc5\xba\nb,-4.25,5,\xc5\xbb\xc3\xb3"
                             "d\xc5\xba\nc,7,,\n");
        const Outcome outcome =
            mPlace.run({"import", "map.geojson", "p.vorn", "--key", "id", "--name", "land",
                        "--table", "t.csv", "--series", "v=v2000..v2001"});
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    }

    void convertsValuesBothWays_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("in2000");
        QTest::addColumn<QString>("in2001");
        const auto check = [](const QStringList &options, const char *in2000, const char *in2001) {
            QTest::newRow(qPrintable(options.join(' '))) << options << in2000 << in2001;
        };
        check({"--storage", "series"}, "a=1.75 b=-4.25 c=7", "a=2.5 b=5");
        check({"--type", "integer"}, "a=1 b=-4 c=7", "a=2 b=5"); // toward zero
        check({"--type", "text", "--decimals", "2"}, "a=1.75 b=-4.25 c=7.00", "a=2.50 b=5.00");
        check({"--type", "text", "--decimals", "0", "--storage", "series"}, "a=1 b=-4 c=7",
              "a=2 b=5");
    }
    void convertsValuesBothWays()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, in2000);
        QFETCH(QString, in2001);
        const QStringList words{"convert", "p.vorn", "v", "w", "--output", "w.vorn", "--overwrite"};
        const Outcome outcome = mPlace.run(words + options);
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
        const QString other = options.contains("series") ? "slices" : "series";
        QCOMPARE(mPlace.run({"convert", "w.vorn", "w", "x", "--storage", other}).code, 0);
        for (const char *dataset : {"w", "x"}) {
            QCOMPARE(held("w.vorn", dataset, "2000"), in2000);
            QCOMPARE(held("w.vorn", dataset, "2001"), in2001);
        }
        // The passing dataset of a conversion in two steps is gone.
        const Outcome info = mPlace.run({"info", "w.vorn", "--json"});
        QCOMPARE(info.at("geographies/0/datasets").toArray().size(), 5);
    }

    void tellsWhatAConversionLoses()
    {
        const auto lost = [this](const char *dataset, const char *type) -> QString {
            const Outcome outcome = mPlace.run({"convert", "p.vorn", dataset, "w", "--type", type,
                                                "--output", "w.vorn", "--overwrite", "--json"});
            QStringList counts;
            for (const char *kind : {"notNumbers", "fractions", "outside"})
                counts.append(QString::number(outcome.json().value(kind).toInt(-1)));
            return counts.join(' ') + outcome.err;
        };
        QCOMPARE(lost("town", "decimal"),
                 QString("2 0 0note: 2 of 2 values without a number, now 0\n"));
        QCOMPARE(lost("v", "integer"),
                 QString("0 3 0note: 3 of 5 values lost the places after the point\n"));
        QCOMPARE(lost("v", "text"), QString("0 0 0"));
    }

    void refusesConversionsOfNothing()
    {
        // Without a type and a storage there is a copy.
        QCOMPARE(mPlace.run({"convert", "p.vorn", "v", "copy", "--output", "c.vorn"}).code, 0);
        const QByteArray before = mPlace.bytes("p.vorn");
        const auto code = [this](const QStringList &words) {
            return mPlace.run(QStringList{"convert", "p.vorn"} + words).code;
        };
        QCOMPARE(code({"v", "w", "--type", "decimal"}), 1);      // as it is
        QCOMPARE(code({"town", "w", "--storage", "series"}), 1); // of what holds for good
        QCOMPARE(code({"v", "town", "--type", "text"}), 1);      // the name is in use
        QCOMPARE(code({"u", "w", "--type", "text"}), 1);
        QCOMPARE(mPlace.bytes("p.vorn"), before);
    }

    void selectsByValueAndRange()
    {
        const auto found = [this](const QStringList &words) {
            const Outcome outcome = mPlace.run(QStringList{"select", "p.vorn", "--json"} + words);
            if (outcome.code != 0)
                return QString::number(outcome.code);
            QStringList objects;
            for (const QJsonValue &object : outcome.json().value("objects").toArray())
                objects.append(object.toObject().value("object").toString());
            return objects.join(' ');
        };
        QCOMPARE(found({"v", "--min", "1.75", "--max", "6", "--at", "2000"}), QString("a"));
        QCOMPARE(found({"v", "--max", "5"}), QString("a b"));
        QCOMPARE(found({"v", "--min=-9", "--max=-4", "--at", "2000"}), QString("b"));
        QCOMPARE(found({"v", "--values", "7,1.75,8", "--at", "2000"}), QString("a c"));
        // The other town's name is the same bytes in Latin-1.
        QCOMPARE(found({"town", "--values",
                        QString::fromUtf8("\xc5\x81\xc3\xb3"
                                          "d\xc5\xba")}),
                 QString("a"));
        QCOMPARE(found({"v", "--min", "0", "--at", "1900"}), QString());
        QCOMPARE(found({"town", "--min", "1"}), QString("1"));
        QCOMPARE(found({"v", "--values", "many"}), QString("2"));
        QCOMPARE(found({"v"}), QString("2"));
    }

    void listsHoldTextsWithCommas()
    {
        Workplace place;
        place.file("map.geojson", squares());
        place.file("t.csv", "id,\"town, old\"\na,\"Washington, D.C.\"\nb,\"the \"\"Old\"\"\"\n"
                            "c,Pacific\n");
        QCOMPARE(place
                     .run({"import", "map.geojson", "p.vorn", "--key", "id", "--table", "t.csv",
                           "--fields", "id,\"town, old\""})
                     .code,
                 0);
        const auto found = [&place](const QStringList &lists) {
            QStringList words{"select", "p.vorn", "town, old", "--json"};
            for (const QString &list : lists)
                words << "--values" << list;
            const Outcome outcome = place.run(words);
            QStringList keys;
            for (const QJsonValue &object : outcome.at("objects").toArray())
                keys.append(object["object"].toString());
            return outcome.code == 0 ? keys.join(' ') : outcome.err;
        };
        QCOMPARE(found({"Washington, D.C."}), QString());
        QCOMPARE(found({"\"Washington, D.C.\""}), QString("a"));
        QCOMPARE(found({"\"Washington, D.C.\",Pacific"}), QString("a c"));
        QCOMPARE(found({"Pacific,, \"the \"\"Old\"\"\" "}), QString("b c"));
        QCOMPARE(found({"Pacific", "the \"Old\""}), QString("b c"));
        QVERIFY2(
            found({"\"Pacific"}).contains("--values: \"Pacific: a quotation mark is not closed"),
            qPrintable(found({"\"Pacific"})));
        QVERIFY(found({"\"Pacific\" Ocean"}).contains("a quotation mark is followed by no ,"));
        // Files and verbs with names of datasets take the same lists.
        QCOMPARE(place
                     .run({"export", "p.vorn", "-", "--format", "csv", "--columns", "datasets",
                           "--datasets", "\"town, old\""})
                     .out.section('\n', 0, 0),
                 QString("\"town, old\""));
        QCOMPARE(place.run({"report", "p.vorn", "r.html", "--datasets", "\"town, old\""}).code, 0);
        QCOMPARE(place.run({"subset", "p.vorn", "s", "--objects", "a,\"b\""}).code, 0);
        // The map has no coordinate system when it is a table of places.
        place.file("p.csv", "id,x,y\na,1,2\n");
        QCOMPARE(place.run({"import", "p.csv", "q.vorn", "--x", "x", "--y", "y"}).code, 0);
        QCOMPARE(place.run({"info", "q.vorn"}).out.section('\n', 0, 0),
                 QString("p: 1 object, points; no coordinate system; always"));
    }

    void cutsGeographiesWithTheirValues()
    {
        const Outcome cut = mPlace.run(
            {"subset", "p.vorn", "part", "--objects", "c,a", "--output", "s.vorn", "--json"});
        QVERIFY2(cut.code == 0, qPrintable(cut.err));
        QCOMPARE(cut.json().value("objects").toArray(), (QJsonArray{"a", "c"}));
        QCOMPARE(cut.json().value("parent").toString(), QString("land"));
        QCOMPARE(held("s.vorn", "part/v", "2000"), QString("a=1.75 c=7"));
        QCOMPARE(held("s.vorn", "part/v", "2001"), QString("a=2.5"));
        const Outcome info = mPlace.run({"info", "s.vorn", "--json"});
        QCOMPARE(info.at("geographies").toArray().size(), 2);
        QCOMPARE(info.at("geographies/1/parent").toString(), QString("land"));
        QCOMPARE(info.at("geographies/1/bounds").toArray(), (QJsonArray{0, 0, 6, 1}));
        // What a choice asks for must all hold.
        const Outcome both =
            mPlace.run({"subset", "p.vorn", "one", "--objects", "a,b", "--where", "v", "--max", "0",
                        "--at", "2000", "--existing", "--output", "o.vorn", "--json"});
        QCOMPARE(both.json().value("objects").toArray(), QJsonArray{"b"});
        QCOMPARE(mPlace.run({"subset", "p.vorn", "none", "--where", "v", "--min", "99"}).code, 1);
        QCOMPARE(mPlace.run({"subset", "p.vorn", "land", "--objects", "a"}).code, 1);
        QCOMPARE(mPlace.run({"subset", "p.vorn", "all"}).code, 2);
    }

    void upgradesProjectsOfAnyAge_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("told");
        QTest::newRow("points alone") << 102000 << "1.02.000";
        QTest::newRow("with a grid") << 160004 << "1.60.004";
        QTest::newRow("half way") << 201044 << "2.01.044";
    }
    void upgradesProjectsOfAnyAge()
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

private:
    /// "a=1 b=? c=7": what a dataset holds at a time, missing values left out.
    QString held(const QString &project, const QString &dataset, const QString &at) const
    {
        QStringList texts;
        for (const char *object : {"a", "b", "c"}) {
            const QJsonArray values =
                mPlace.run({"series", project, dataset, object, "--json"}).at("values").toArray();
            for (const QJsonValue &value : values)
                if (value["time"].toString() == at && !value["value"].isNull())
                    texts.append(QString(object) + '=' + value["value"].toVariant().toString());
        }
        return texts.join(' ');
    }

    Workplace mPlace;
};

QTEST_GUILESS_MAIN(TestMeridorChanges)
#include "tst_MeridorChanges.moc"
