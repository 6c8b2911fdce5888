// SPDX-License-Identifier: MIT
/// What checks say when they fail; free of the library, so that every test may use it.
#pragma once
#include <QByteArray>
#include <QDebug>
#include <QString>
#include <QtTest>
#include <initializer_list>
#include <random>

/// What converts to true or false: pointers, too.
struct Condition {
    template <class T> Condition(const T &value) : holds(static_cast<bool>(value)) {}
    bool holds;
};

/// Several conditions as one value to compare, a letter each: "yyn". They are evaluated from left to
/// right, all of them.
inline QByteArray answers(std::initializer_list<Condition> conditions)
{
    QByteArray letters;
    for (const Condition &condition : conditions)
        letters += condition.holds ? 'y' : 'n';
    return letters;
}

/// Names the turn of a loop for the checks in it: what follows a failure tells the value.
class InCase {
public:
    template <class T> explicit InCase(const T &value) : mHadFailed(QTest::currentTestFailed())
    {
        QDebug(&mName).nospace() << value;
    }
    ~InCase()
    {
        if (!mHadFailed && QTest::currentTestFailed())
            qInfo("in the case %s", qPrintable(mName));
    }
    Q_DISABLE_COPY(InCase)

private:
    const bool mHadFailed;
    QString mName;
};

/// The seed of a random walk: DATAINTERFACE_TEST_SEED where that is a number, else `usual`. It is
/// printed, so that a failure can be repeated.
inline unsigned walkSeed(unsigned usual)
{
    bool isGiven = false;
    const unsigned given = qgetenv("DATAINTERFACE_TEST_SEED").toUInt(&isGiven);
    const unsigned seed = isGiven ? given : usual;
    qInfo("DATAINTERFACE_TEST_SEED=%u", seed);
    return seed;
}

/// A new seed for each run unless one is given.
inline unsigned walkSeed()
{
    return walkSeed(std::random_device()());
}
