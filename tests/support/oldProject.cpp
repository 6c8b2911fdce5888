// SPDX-License-Identifier: MIT
#include <QColor>
#include <QDataStream>
#include <QMap>
#include <QPointF>
#include <QSet>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <cmath>
#include <fstream>
#include <iterator>
#include "fennimark/FMObjectChain.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/VORNBuilder.h"
#include "support/oldValues.h"

namespace oldProject {

namespace {

// Points on a line, all there from the first interval's start to far beyond the last one's end.
QByteArray geometry(int objects)
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath(QStringLiteral("geometry")).toStdString();
    const timeRange always{0.0, 1e6, 0xFF};
    VORNBuilder builder({{0.0, double(objects), 0.0, 1.0}, always}, nullptr, nullptr);
    for (int object = 0; object < objects; ++object)
        builder.CreateChain({new FMPoint(QPointF(object, 0.5))}, {always}, object);
    builder.Finish(path.c_str(), nullptr);
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    QDataStream in(QByteArray::fromStdString(bytes));
    Fennims fennims;
    fennims.Open(in, nullptr);
    fennims.SetName("points");
    return array([&](QDataStream &out) { fennims.Save(out, nullptr); });
}

class Writer {
public:
    explicit Writer(const Sample &sample)
        : s(sample), mOut(&mBytes, QIODevice::WriteOnly), mValues(sample)
    {
        mOut.setVersion(streamVersion(s.version));
    }

    QByteArray project()
    {
        header();
        if (since(103000))
            mOut << qint8(1);
        vectorGeography();
        if (since(103000))
            rasterGeography();
        if (since(180005))
            blocks();
        if (since(150000))
            models(-1);
        if (since(150000))
            mOut << qint32(1);
        return mBytes;
    }

    QByteArray vectorGeographyAlone()
    {
        vectorGeography();
        return mBytes;
    }

private:
    bool since(int version) const { return s.version >= version; }
    bool within(int first, int last) const { return since(first) && s.version <= last; }
    bool has(Fault fault) const { return s.fault == fault; }

    void header()
    {
        mOut << versionText(s.version);
        if (since(107000))
            mOut << QStringLiteral("Meridor");
        mOut << QColor(1, 2, 3) << qint8(1) << qint8(1) << qint8(0) << qint8(0);
        for (int reserved = 0; reserved < (since(103000) ? 3 : 4); ++reserved)
            mOut << qint32(0);
        mOut << qint32(since(103000) ? 2 : 1) << QStringLiteral("points");
        if (since(103000))
            mOut << QStringLiteral("grid");
    }

    void ids(int id) { mOut << qint32(id) << qint32(kRasterId + 1); }

    void geography(int id, const QString &name, bool isStatic)
    {
        if (since(130000))
            mOut << name;
        ids(id);
        if (since(170006))
            mOut << qint8(isStatic);
        if (since(170004))
            tags({{QStringLiteral("Source"), name}});
        if (within(103000, 106999))
            mOut << qint8(1) << qint8(0);
        if (since(107000))
            mOut << qint32(3);
        if (since(103000))
            mOut << qint32(-1) << QVector<qint32>{3, 1};
        if (since(103000))
            weightSets(id);
    }

    // Of the points alone: one that is calculated and one of the host's. Lists stand in place
    // before 201042, and there are none from 400002 on.
    void weightSets(int geography)
    {
        const QStringList names{QStringLiteral("near"), QStringLiteral("own")};
        const int count = geography == kVectorId ? names.size() : 0;
        mOut << qint32(count);
        for (int i = count; i-- > 0;) {
            if (since(120000))
                mOut << qint32((geography << 16) + i) << qint32((geography << 16) + i) << qint32(2);
            mOut << names.at(i) << qint32(0) << qint32(i == 0 ? 1 : 99) << qint32(i == 0 ? 2 : 99);
            mOut << qint32(3) << qint32(0) << qint32(1) << 0.5;
            if (since(107000))
                mOut << 2.0;
            mOut << 1.5;
            if (since(104000))
                mOut << qint8(1);
            if (within(105000, 106999))
                mOut << qint8(0);
            if (since(105000))
                mOut << QStringLiteral("information");
            weightLists();
            if (since(112000))
                mOut << qint8(0);
        }
    }
    void weightLists()
    {
        mOut << qint32(!since(400002));
        if (since(400002))
            return;
        mOut << mValues.span(0) << qint32(s.objects);
        for (int object = 0; object < s.objects; ++object) {
            if (since(201042)) {
                mOut << qint32(mValues.store(QByteArray(4, '\0')));
                continue;
            }
            mOut << qint32(1) << qint32(0);
            if (since(130000))
                mOut << 0.5f << 1.5f;
            else
                mOut << 0.5 << 1.5;
        }
    }

    void vectorGeography()
    {
        if (s.version > 102000)
            geography(kVectorId, QStringLiteral("points"), false);
        const QByteArray points = geometry(s.objects);
        mOut.writeRawData(points.constData(), points.size());
        if (s.version <= 102000)
            ids(kVectorId);
        mOut << qint32(s.objects);
        for (int object = 0; object < s.objects; ++object)
            mOut << qint32(object) << qint32(object);
        if (s.version <= 102000)
            weightSets(kVectorId);
        mOut << qint32(s.objects);
        for (int object = 0; object < s.objects; ++object)
            mOut << qint32(object);
        vectorSource();
    }

    void vectorSource()
    {
        mOut << qint32(1) << qint32(kFirstDataset + s.datasets.size());
        const int objects = has(Fault::SourceObjectCount) ? 0x7FFFFFFF : s.objects;
        if (!since(130000)) {
            tables(kFirstDataset, s.datasets.size());
            mOut << qint32(objects);
        }
        mOut << qint32(s.datasets.size());
        for (int i = 0; i < s.datasets.size(); ++i) {
            if (since(130000))
                mOut << qint32(1);
            mOut << qint32(kFirstDataset + i);
            vectorDataset(i, s.datasets.at(i));
        }
        if (within(101000, 101999))
            mOut << QMap<int, QString>{{1, QStringLiteral("dropped")}};
        if (since(130000))
            mOut << qint32(objects);
    }

    // Names and attributes before 130000, which stand in the source.
    void tables(int firstId, int count)
    {
        QMap<int, QString> names;
        QMap<int, QString> shortTexts;
        QMap<int, QString> longTexts;
        mOut << qint32(count);
        for (int i = count; i-- > 0;) {
            mOut << qint32(firstId + i);
            attributes();
            if (!has(Fault::UnnamedDataset) || i > 0)
                names.insert(firstId + i, QStringLiteral("set %1").arg(i));
            shortTexts.insert(firstId + i, QStringLiteral("short"));
            longTexts.insert(firstId + i, QStringLiteral("long"));
        }
        mOut << names << shortTexts << longTexts;
        if (within(102001, 119999))
            mOut << names;
    }

    void attributes()
    {
        mOut << qint32(4) << QStringLiteral("Text");
        datum(2, 0, 0.0, "\xE9t\xE9");
        mOut << QStringLiteral("Integer");
        datum(0, 7, 0.0, QByteArray());
        mOut << QStringLiteral("Empty");
        datum(3, 0, 0.0, QByteArray());
        mOut << QStringLiteral("Decimal");
        datum(1, 0, 2.5, QByteArray());
    }

    void datum(int type, qint64 integer, double decimal, const QByteArray &text)
    {
        mOut << qint32(type);
        if (s.version > 109000)
            mOut << qint8(0x55);
        if (!since(103000)) {
            mOut << (type == 0 ? QVector<qint64>{integer, 99} : QVector<qint64>())
                 << (type == 1 ? QVector<double>{decimal} : QVector<double>())
                 << (type == 2 ? QVector<QString>{QString::fromLatin1(text)} : QVector<QString>());
            return;
        }
        mOut << integer << decimal;
        if (since(120000))
            mOut << text;
        else
            mOut << QString::fromLatin1(text);
    }

    void tags(const QMap<QString, QString> &texts)
    {
        if (!since(180000)) {
            mOut << texts;
            return;
        }
        QMap<QString, QVariant> variants{
            {QStringLiteral("List"), QStringList{QStringLiteral("a")}}};
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            variants.insert(text.key(), text.value());
        variants.insert(QStringLiteral("Text"), QString::fromLatin1("\xE9t\xE9"));
        variants.insert(QStringLiteral("Integer"), 7);
        variants.insert(QStringLiteral("Decimal"), 2.5);
        mOut << variants;
    }

    // What every dataset has; its id is out.
    void base(int id, int number, int typeCode, const Span &bounds)
    {
        if (since(130000)) {
            if (since(201001))
                mOut << qint32(typeCode);
            if (since(170006))
                mOut << qint8(0);
            QMap<QString, QString> texts{
                {QStringLiteral("Short description"), QStringLiteral("short")},
                {QStringLiteral("Long description"), QStringLiteral("long")}};
            const QString name = QStringLiteral("set %1").arg(number);
            if (since(170009))
                texts.insert(QStringLiteral("Name"), name);
            else
                mOut << name;
            if (!since(180000))
                attributes();
            if (since(170004))
                tags(texts);
            else
                mOut << QStringLiteral("short") << QStringLiteral("long");
            mOut << bounds;
        }
        if (since(120000))
            mOut << qint32(2) << QStringLiteral("folder") << qint32(0) << QString() << qint32(3);
        if (!since(103000))
            return;
        if (since(130000))
            mOut << qint32(realizations(s.version)) << qint32(realizations(s.version));
        for (int realization = 0; realization < realizations(s.version); ++realization)
            statistics(number, id >= kFirstRaster ? bounds : mValues.span(0));
        if (since(130000)) {
            mOut << qint32(5);
            models(id);
        }
    }

    void statistics(int number, const Span &stamp)
    {
        mOut << qint32(1) << stamp;
        record(0.5);
        record(number + 0.125);
    }
    void record(double mean)
    {
        mOut << mean << 0.25;
        datum(1, 0, -1.5, QByteArray());
        datum(0, 8, 0.0, QByteArray());
        mOut << qint8(1) << qint8(1);
    }

    // One variogram model of a dataset, or of none.
    void models(int dataset)
    {
        mOut << qint32(1) << qint32(0) << QStringLiteral("model") << qint32(0);
        if (since(170005))
            mOut << qint32(17);
        if (since(160002))
            mOut << qint32(18);
        mOut << qint32(1) << mValues.span(0) << qint32(1) << 2.0 << 0.0 << 30.0 << 30.0
             << qint32(1); // spherical
        mOut << qint32(0);
        mOut << qint32(1) << mValues.span(0) << qint32(1) << 1.0 << 2.0 << 3.0 << qint32(4);
        mOut << qint32(dataset) << qint32(-1) << qint32(12) << qint32(-1) << qint32(2);
        const auto run = [this](int count, auto value) {
            for (int i = 0; i < count; ++i)
                mOut << value;
        };
        run(3, qint32(1)), run(5, 1.5), run(3, qint8(1)), run(2, qint32(2)), run(1, 2.5),
            run(2, qint8(0));
        run(3, 3.5), run(1, qint32(3)), run(2, qint8(1)), run(5, qint32(4)), run(2, qint8(1));
    }

    void vectorDataset(int number, const Dataset &dataset)
    {
        constexpr int kTypeCodes[] = {2, 1, 4};
        if (since(103000))
            base(kFirstDataset + number, number, kTypeCodes[dataset.type],
                 {start(0), start(s.times), true, true});
        if (since(180004))
            mOut << qint32(dataset.isSliced);
        if (!since(201001))
            mOut << qint32(has(Fault::UnknownType) ? 3 : dataset.type);
        const bool isWrong = has(Fault::DatasetObjectCount) && number == 0;
        mOut << qint32(isWrong                         ? s.objects + 1
                       : has(Fault::SourceObjectCount) ? 0x7FFFFFFF
                                                       : s.objects);
        if (since(130000))
            mValues.frequencies(mOut, number, dataset);
        mValues.write(mOut, number, dataset);
        if (!since(103000))
            statistics(number, mValues.span(0));
    }

    void rasterGeography()
    {
        mOut << qint8(0);
        geography(kRasterId, QStringLiteral("grid"), true);
        const int datasets = since(180005) ? 3 : 0;
        mOut << qint32(0) << qint32(kFirstRaster + datasets);
        if (!since(130000)) {
            tables(kFirstRaster, 0);
            mOut << qint32(0);
        }
        mOut << qint32(datasets);
        for (int i = 0; i < datasets; ++i)
            rasterDataset(i);
        mOut << 0.0 << double(kColumns) << 0.0 << double(kRows) << qint32(kColumns) << qint32(kRows)
             << qint32(2000) << 1.0;
        if (since(160000))
            mOut << Span{3, 8, true, false};
        if (!since(170004))
            mOut << QStringLiteral("history");
        if (!since(105000))
            mOut << Span{1, 2, true, true};
        if (within(111001, 170003))
            mOut << QStringLiteral("projection");
        if (within(160000, 170003))
            mOut << QStringLiteral("metre");
    }

    void rasterDataset(int i)
    {
        const bool isByte = i == 0;
        const qint32 type = isByte ? 0x400 : 0x100;
        const qint32 oldType = isByte ? 1 : 0;
        mOut << qint32(2) << qint32(kFirstRaster + i);
        base(kFirstRaster + i, i, since(306014) || isByte ? type : 16, {3, 8, true, true});
        if (!since(201001))
            mOut << oldType;
        mOut << qint32(isByte ? 8 : 32) << qint32(kRows) << qint32(kColumns);
        missingFlag(i);
        const QMap<quint8, int> bytes{{1, 2}, {2, 2}, {4, 2}, {5, 2}, {6, 2}};
        rasterFrequencies(isByte ? bytes : QMap<quint8, int>());
        mOut << qint32(realizations(s.version));
        const qint32 gridType = since(201001) ? type : oldType;
        const bool hasBitCodes = since(201001) && !since(306014) && !isByte;
        for (int realization = realizations(s.version); realization-- > 0;)
            mOut << qint32(realization) << qint32(1) << Span{3, 8, true, true} << qint32(kRows)
                 << qint32(kColumns) << (hasBitCodes && realization == 0 ? 16 : gridType)
                 << qint32(isByte ? 8 : 32) << qint32(0) << mValues.store(cells(i));
    }

    void missingFlag(int i)
    {
        const double infinity = std::numeric_limits<double>::infinity();
        if (since(306014) && i == 0)
            mOut << qint32(0x1400) << qint8(-1);
        else if (since(306014) && i == 1)
            mOut << qint32(0x200) << -9999.0f;
        else if (since(306014))
            mOut << qint32(0x100) << -infinity;
        else
            mOut << (i == 1 ? QSet<double>{-9999.0} : QSet<double>())
                 << (i == 0 ? QSet<quint64>{255} : QSet<quint64>());
    }

    void rasterFrequencies(const QMap<quint8, int> &bytes)
    {
        const QMap<quint32, int> none;
        if (since(180083)) {
            mOut << array([&](QDataStream &out) {
                out << bytes << none << none << none << none << none << none;
            });
            return;
        }
        QMap<quint8, int> half = bytes;
        for (int &count : half)
            count /= 2;
        mOut << qint32(2);
        for (int realization = 0; realization < 2; ++realization)
            mOut << half << none << none << none << none;
    }

    static QByteArray cells(int i)
    {
        QByteArray bytes;
        for (int cell = 0; cell < kRows * kColumns; ++cell) {
            const double missing = i == 1 ? -9999.0 : -std::numeric_limits<double>::infinity();
            if (i == 0)
                bytes.append(static_cast<char>(static_cast<quint8>(kCells[cell])));
            else
                bytes.append(raw(static_cast<float>(cell == 2 ? missing : kCells[cell])));
        }
        return bytes;
    }

    void blocks()
    {
        const QVector<QByteArray> &all = mValues.blocks();
        mOut << qint32(all.size()) << qint32(all.size());
        for (int id = 0; id < all.size(); ++id)
            mOut << qint32(id) << (since(180050) ? qCompress(all.at(id)) : all.at(id));
    }

    const Sample &s;
    QByteArray mBytes;
    QDataStream mOut;
    ValueWriter mValues;
};

} // namespace

int realizations(int version)
{
    return version < 130000 ? 1 : 2;
}

int number(int dataset, int realization, int object, int time)
{
    const quint32 place =
        ((static_cast<quint32>(dataset) * 3U + static_cast<quint32>(realization)) * 1000U
         + static_cast<quint32>(time))
            * 100000U
        + static_cast<quint32>(object);
    return static_cast<int>(place * 2654435761U >> 15) - 65536;
}

QString text(int number)
{
    return QString::fromLatin1("\xE9") + QString::number(number);
}

bool isPresent(int realization, int object, int time)
{
    return (realization + object + time) % 4 != 3;
}

QVector<int> versions()
{
    QVector<int> sides{100000};
    for (const int first :
         {101000, 102000, 102001, 103000, 104000, 105000, 105001, 107000, 109000, 109001,
          111001, 112000, 112001, 120000, 130000, 150000, 160000, 160002, 160005, 170001,
          170004, 170005, 170006, 170009, 170100, 180000, 180004, 180005, 180022, 180050,
          180063, 180083, 180088, 201001, 201038, 201042, 201044, 306014, 400002, 400019}) {
        if (sides.last() != first - 1)
            sides.append(first - 1); // 1.02.999 stands before 1.03.000
        sides.append(first);
    }
    sides.append(400021);
    return sides;
}

QString versionText(int version)
{
    return QStringLiteral("%1.%2.%3")
        .arg(version / 100000)
        .arg(version / 1000 % 100, 2, 10, QLatin1Char('0'))
        .arg(version % 1000, 3, 10, QLatin1Char('0'));
}

int streamVersion(int version)
{
    if (version >= 170100 && version < 180000)
        return 12;
    static const QMap<int, int> kFirst{{0, 6},       {112001, 7},  {130000, 8},  {180022, 10},
                                       {180063, 11}, {180088, 12}, {201038, 14}, {400019, 16}};
    return *--kFirst.upperBound(version);
}

QByteArray write(const Sample &sample)
{
    return Writer(sample).project();
}

QByteArray writeVectorGeography(const Sample &sample)
{
    return Writer(sample).vectorGeographyAlone();
}

} // namespace oldProject
