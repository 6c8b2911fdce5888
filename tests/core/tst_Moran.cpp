// SPDX-License-Identifier: MIT
// Against the definitions, written out plainly over a full matrix and the same shuffles.
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>
#include <cmath>
#include <random>
#include "core/analysis/moran.h"
#include "datainterface/StatisticsAPI.h"
#include "datainterface/randomizationIt.h"

using namespace meridor;

namespace {

constexpr int kSeed = 77;
constexpr int kPermutations = 199;
const Meter kSilent = [](int) {};

struct Case {
    std::vector<double> values;
    std::vector<std::vector<double>> matrix;
    SparseWeights weights;
    size_t n() const { return values.size(); }
};

/// Uneven weights in one direction only, objects without neighbours, and (whole numbers) ties.
Case randomCase(int n, double density, bool ties, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform;
    Case made;
    const auto size = static_cast<size_t>(n);
    made.matrix.assign(size, std::vector<double>(size));
    for (size_t i = 0; i < size; ++i) {
        made.values.push_back(ties ? std::floor(4 * uniform(generator)) : uniform(generator));
        for (size_t j = 0; j < size; ++j) {
            if (i % 7 == 6 || uniform(generator) >= density)
                continue;
            const double weight = 1 + std::floor(3 * uniform(generator));
            made.weights.addNeighbor(static_cast<int>(j), weight);
            made.matrix[i][j] = i == j ? 0 : weight;
        }
        made.weights.endRow();
    }
    return made;
}

std::vector<double> centred(std::vector<double> values)
{
    double sum = 0;
    for (const double value : values)
        sum += value;
    for (double &value : values)
        value -= sum / static_cast<double>(values.size());
    return values;
}

double plainLag(const Case &c, size_t i, const std::vector<double> &z)
{
    double sum = 0;
    for (size_t j = 0; j < z.size(); ++j)
        sum += c.matrix[i][j] * z[j];
    return sum;
}

double plainMoran(const Case &c, const std::vector<double> &z)
{
    double products = 0, squares = 0, weights = 0;
    for (size_t i = 0; i < c.n(); ++i) {
        products += z[i] * plainLag(c, i, z);
        squares += z[i] * z[i];
        for (const double weight : c.matrix[i])
            weights += weight;
    }
    return static_cast<double>(c.n()) / weights * products / squares;
}

double foldedP(int above)
{
    return (std::min(above, kPermutations - above) + 1.0) / (kPermutations + 1.0);
}

std::vector<std::vector<int>> shuffles(size_t n)
{
    VORN_SetRandomSeed(kSeed);
    std::vector<std::vector<int>> all;
    shuffleIt it(static_cast<int>(n), kPermutations);
    for (int p = 0; p < kPermutations; ++p, it++)
        all.emplace_back(it.indices(), it.indices() + n);
    return all;
}

} // namespace

class TestMoran : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void equalsTheDefinition();
    void flagsWhatIsFarOutByChance();
    void answersNothingWhereThereIsNothing();
    void meetsTheFiguresOfTheStates();
    void islandsCountOrNot();

private:
    void compare(int n, double density, bool ties);
};

void TestMoran::compare(int n, double density, bool ties)
{
    const Case c = randomCase(n, density, ties, 5);
    const std::vector<double> z = centred(c.values);
    const double observed = plainMoran(c, z);
    const double near = 1e-10;

    int above = 0;
    std::vector<int> aboveOf(c.n());
    for (const std::vector<int> &shuffle : shuffles(c.n())) {
        std::vector<double> permuted;
        for (const int index : shuffle)
            permuted.push_back(z[static_cast<size_t>(index)]);
        above += plainMoran(c, permuted) >= observed - near;
        for (size_t i = 0; i < c.n(); ++i) {
            // The others in the shuffle's order, dealt out to the neighbours.
            size_t next = 0;
            double lag = 0;
            for (size_t j = 0; j < c.n(); ++j) {
                if (c.matrix[i][j] == 0)
                    continue;
                if (shuffle[next] == static_cast<int>(i))
                    ++next;
                lag += c.matrix[i][j] * z[static_cast<size_t>(shuffle[next++])];
            }
            aboveOf[i] += z[i] * lag >= z[i] * plainLag(c, i, z) - near;
        }
    }
    VORN_SetRandomSeed(kSeed);
    const MoranTest whole = moran(c.values, c.weights, kPermutations, kSilent);
    QVERIFY(std::abs(whole.value - observed) < near);
    QCOMPARE(whole.expectation, -1.0 / (n - 1));
    QCOMPARE(whole.p, foldedP(above));

    VORN_SetRandomSeed(kSeed);
    const LocalMoran local = localMoran(c.values, c.weights, kPermutations, kSilent);
    double sum = 0;
    for (size_t i = 0; i < c.n(); ++i) {
        const bool alone = plainLag(c, i, std::vector<double>(c.n(), 1.0)) == 0;
        QCOMPARE(std::isnan(local.values[i]), alone);
        if (alone)
            continue;
        sum += local.values[i];
        QVERIFY2(local.p[i] == foldedP(aboveOf[i]), qPrintable(QString::number(i)));
    }
    double weights = 0;
    for (const auto &row : c.matrix)
        for (const double weight : row)
            weights += weight;
    QVERIFY(std::abs(sum / weights - observed) < near); // the parts make the whole
}

void TestMoran::equalsTheDefinition()
{
    compare(60, 0.08, false);
    compare(13, 1.1, false); // all are neighbours of all
    compare(31, 0.2, true);
    compare(5, 0.7, false);
}

void TestMoran::flagsWhatIsFarOutByChance()
{
    const Case c = randomCase(20, 0.2, false, 9);
    VORN_SetRandomSeed(kSeed);
    const auto flags = flagsOfChance(c.values, c.weights, kPermutations, 0.05, kSilent);
    const std::vector<double> z = centred(c.values);
    const auto all = shuffles(c.n());
    for (size_t i = 0; i < c.n(); ++i) {
        std::vector<double> statistics;
        for (const std::vector<int> &shuffle : all) {
            std::vector<double> permuted;
            for (const int index : shuffle)
                permuted.push_back(z[static_cast<size_t>(index)]);
            statistics.push_back(permuted[i] * plainLag(c, i, permuted));
        }
        for (size_t p = 0; p < statistics.size(); ++p) {
            const float own = static_cast<float>(statistics[p]);
            const auto asFar = [&](bool high) {
                return std::count_if(statistics.begin(), statistics.end(), [&](double other) {
                    return high ? static_cast<float>(other) >= own
                                : static_cast<float>(other) <= own;
                });
            };
            // A p of at most 0.05 among 199 permutations: at most 10 are as far out, itself
            // included.
            const bool farOut = std::min(asFar(true), asFar(false)) <= 10;
            if (i % 7 != 6) // objects without neighbours are ties throughout
                QVERIFY2(flags[p][i] == farOut, qPrintable(QString("%1 in %2").arg(i).arg(p)));
        }
    }
}

void TestMoran::answersNothingWhereThereIsNothing()
{
    SparseWeights pair;
    pair.addNeighbor(1, 1);
    pair.endRow();
    pair.endRow();
    SparseWeights none;
    none.endRow();
    none.endRow();
    QVERIFY(std::isnan(moran({3, 3}, pair, 9, kSilent).value)); // all equal
    QVERIFY(std::isnan(moran({3, 4}, none, 9, kSilent).p));     // no weight
    QVERIFY(std::isnan(moran({}, SparseWeights(), 9, kSilent).value));
    QVERIFY(std::isnan(moran({3, 4}, pair, 0, kSilent).p)); // no permutation
    QVERIFY(std::isnan(localMoran({3, 4}, none, 9, kSilent).p[0]));
    QVERIFY(localMoran({}, SparseWeights(), 9, kSilent).values.empty());
}

/// R's spdep 1.2-7: moran.test and localmoran on the queen neighbours of the 48 states.
void TestMoran::meetsTheFiguresOfTheStates()
{
    const auto linesOf = [](const char *name) {
        QFile file(QString(MERIDOR_TEST_SAMPLES) + "/us_income/" + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
    };
    const QList<QByteArray> table = linesOf("income_1929_2009.csv");
    QHash<QByteArray, int> rows;
    std::vector<double> first, last;
    for (int row = 1; row < table.size() && !table[row].isEmpty(); ++row) {
        const QList<QByteArray> fields = table[row].split(',');
        rows.insert(fields[0], row - 1);
        first.push_back(fields[2].toDouble());
        last.push_back(fields.last().toDouble());
    }
    QCOMPARE(rows.size(), 48);
    QHash<int, QList<QByteArray>> neighbors;
    const QList<QByteArray> lists = linesOf("states48.gal");
    for (int line = 1; line + 1 < lists.size(); line += 2)
        neighbors.insert(rows.value(lists[line].split(' ')[0], -1), lists[line + 1].split(' '));
    SparseWeights weights;
    for (int row = 0; row < 48; ++row) {
        for (const QByteArray &other : neighbors.value(row))
            weights.addNeighbor(rows.value(other.trimmed(), -1), 1.0 / neighbors[row].size());
        weights.endRow();
    }
    VORN_SetRandomSeed(kSeed);
    const MoranTest in1929 = moran(first, weights, 999, kSilent);
    const MoranTest in2009 = moran(last, weights, 999, kSilent);
    QCOMPARE(QString::number(in1929.value, 'f', 6), QString("0.626927"));
    QCOMPARE(QString::number(in2009.value, 'f', 6), QString("0.428769"));
    QCOMPARE(QString::number(in1929.deviate, 'f', 4), QString("6.6321"));
    QCOMPARE(QString::number(in2009.deviate, 'f', 4), QString("4.6546"));
    QCOMPARE(in2009.p, 0.001);
    // Near enough to normal that the permutations' band is that of 1.96 deviations to either side.
    for (const MoranTest &test : {in1929, in2009}) {
        const double deviation = (test.value - test.expectation) / test.deviate;
        const auto inDeviations = [&](double limit) {
            return (limit - test.expectation) / deviation;
        };
        QVERIFY2(std::abs(inDeviations(test.low) + 1.96) < 0.25,
                 qPrintable(QString::number(test.low)));
        QVERIFY2(std::abs(inDeviations(test.high) - 1.96) < 0.25,
                 qPrintable(QString::number(test.high)));
    }
    int significant = 0;
    for (const double deviate : localMoran(first, weights, 0, kSilent).deviates) {
        double below = 0;
        significant += VORN_GetNormalP(-std::abs(deviate), below) && 2 * below < 0.05;
    }
    QCOMPARE(significant, 15);
}

/// R's spdep 1.2-7: moran.test of SID74 on ncCC89, style "W", with adjust.n TRUE (the default) and
/// FALSE; two of the 100 counties have no neighbours.
void TestMoran::islandsCountOrNot()
{
    const auto read = [](const char *name) {
        QFile file(QString(MERIDOR_TEST_SAMPLES) + "/nc_sids/" + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QHash<QByteArray, size_t> rows;
    std::vector<double> values;
    const QJsonArray features =
        QJsonDocument::fromJson(read("nc_counties.geojson"))["features"].toArray();
    for (const QJsonValue &feature : features) {
        const QJsonValue properties = feature["properties"];
        rows.insert(properties["fips"].toVariant().toByteArray(), values.size());
        values.push_back(properties["SID74"].toDouble());
    }
    QCOMPARE(values.size(), size_t(100));
    std::vector<std::vector<int>> lists(values.size());
    const QList<QByteArray> lines = read("ncCC89.gal").split('\n');
    for (int line = 1; line < lines.size(); ++line) {
        const QList<QByteArray> ego = lines[line].simplified().split(' ');
        if (ego.size() != 2 || ego[1] == "0")
            continue;
        for (const QByteArray &other : lines[++line].simplified().split(' '))
            lists[rows[ego[0]]].push_back(static_cast<int>(rows[other]));
    }
    SparseWeights weights;
    for (const std::vector<int> &list : lists) {
        for (const int other : list)
            weights.addNeighbor(other, 1.0 / static_cast<double>(list.size()));
        weights.endRow();
    }
    const auto figures = [&](Islands islands) {
        const MoranTest test = moran(values, weights, 0, kSilent, islands);
        return QStringLiteral("%1 %2 %3")
            .arg(test.value, 0, 'f', 9)
            .arg(test.expectation, 0, 'f', 9)
            .arg(test.deviate, 0, 'f', 9);
    };
    QCOMPARE(figures(Islands::Drop), QString("0.107408461 -0.010309278 1.638662738"));
    QCOMPARE(figures(Islands::Keep).left(25),
             QString("0.109600470 -0.010101010 1.664614").left(25));
}

QTEST_GUILESS_MAIN(TestMoran)
#include "tst_Moran.moc"
