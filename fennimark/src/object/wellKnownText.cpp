// SPDX-License-Identifier: MIT
// Well-known text is a tree of NODE["name", number, NODE[...], word, ...] in square or round
// brackets. It is read in one pass, with the open nodes on a stack. The stack decides to which
// system or unit a name or a factor belongs.
#include "object/wellKnownText.h"
#include <QVector>

namespace fennimark {
namespace {

constexpr int kMaxLength = 1 << 20;
constexpr int kMaxDepth = 64;

enum class Node { Other, Projected, Geographic, Unit, LinearUnit, AngularUnit, Carrier };

Node nodeOf(const QString &word)
{
    struct Row {
        const char *word;
        Node node;
    };
    static constexpr Row kRows[] = {
        {"PROJCS", Node::Projected},
        {"PROJCRS", Node::Projected},
        {"PROJECTEDCRS", Node::Projected},
        {"BASEPROJCRS", Node::Projected},
        {"GEOGCS", Node::Geographic},
        {"GEOGCRS", Node::Geographic},
        {"GEOGRAPHICCRS", Node::Geographic},
        {"GEODCRS", Node::Geographic},
        {"GEODETICCRS", Node::Geographic},
        {"BASEGEOGCRS", Node::Geographic},
        {"BASEGEODCRS", Node::Geographic},
        {"UNIT", Node::Unit},
        {"LENGTHUNIT", Node::LinearUnit},
        {"ANGLEUNIT", Node::AngularUnit},
        {"AXIS", Node::Carrier},
        {"CS", Node::Carrier},
        {"PRIMEM", Node::Carrier},
        {"PRIMEMERIDIAN", Node::Carrier},
    };
    for (const Row &row : kRows) {
        if (word.compare(QLatin1String(row.word), Qt::CaseInsensitive) == 0)
            return row.node;
    }
    return Node::Other;
}

class Reader {
public:
    Reader(const QString &text, SystemNames &names) : mText(text), mNames(names) {}

    bool read()
    {
        if (mText.size() > kMaxLength || !readNode())
            return false;
        while (!mOpen.isEmpty()) {
            if (!readItem())
                return false;
        }
        skipSpace();
        return mAt == mText.size() && !(mNames.projection.isEmpty() && mNames.geographic.isEmpty());
    }

private:
    struct Open {
        Node node;
        QChar close;
        int items; ///< read so far
        QString name;
    };

    QChar peek() const { return mAt < mText.size() ? mText[mAt] : QChar(); }
    void skipSpace()
    {
        while (peek().isSpace())
            ++mAt;
    }
    QString takeWord()
    {
        const int first = mAt;
        while (peek().isLetterOrNumber() || peek() == QLatin1Char('_') || peek() == QLatin1Char('.')
               || peek() == QLatin1Char('+') || peek() == QLatin1Char('-')
               || peek() == QLatin1Char(':'))
            ++mAt;
        return mText.mid(first, mAt - first);
    }

    bool readNode()
    {
        skipSpace();
        const QString word = takeWord();
        skipSpace();
        return !word.isEmpty() && open(word);
    }

    bool open(const QString &word)
    {
        const QChar bracket = peek();
        if ((bracket != QLatin1Char('[') && bracket != QLatin1Char('('))
            || mOpen.size() == kMaxDepth)
            return false;
        ++mAt;
        mOpen.append(
            {nodeOf(word), QLatin1Char(bracket == QLatin1Char('[') ? ']' : ')'), 0, QString()});
        return true;
    }

    /// Reads one item of the innermost node and the comma or the closing brackets after it.
    bool readItem()
    {
        skipSpace();
        if (peek() == QLatin1Char('"')) {
            QString name;
            if (!takeString(name))
                return false;
            if (mOpen.last().items == 0)
                takeName(name);
        } else {
            const QString word = takeWord();
            skipSpace();
            if (word.isEmpty())
                return false;
            if (open(word))
                return true;
            if (mOpen.last().items == 1)
                takeFactor(word);
        }
        return finishItem();
    }

    bool finishItem()
    {
        ++mOpen.last().items;
        skipSpace();
        while (!mOpen.isEmpty() && peek() == mOpen.last().close) {
            ++mAt;
            mOpen.removeLast();
            if (!mOpen.isEmpty())
                ++mOpen.last().items;
            skipSpace();
        }
        if (mOpen.isEmpty())
            return true;
        if (peek() != QLatin1Char(','))
            return false;
        ++mAt;
        return true;
    }

    bool takeString(QString &value)
    {
        for (++mAt; mAt < mText.size(); ++mAt) {
            if (mText[mAt] == QLatin1Char('"')) {
                if (mAt + 1 >= mText.size() || mText[mAt + 1] != QLatin1Char('"')) {
                    ++mAt;
                    return true;
                }
                ++mAt; // a doubled quote stands for one
            }
            value.append(mText[mAt].isPrint() ? mText[mAt] : QLatin1Char(' '));
        }
        return false;
    }

    /// The owner of the innermost node, which is a unit: the nearest node around it that is not an
    /// axis, a coordinate system or a prime meridian.
    Node unitOwner() const
    {
        for (int i = mOpen.size() - 2; i >= 0; --i) {
            if (mOpen[i].node != Node::Carrier)
                return mOpen[i].node;
        }
        return Node::Other;
    }
    bool isLinear() const
    {
        const Node node = mOpen.last().node;
        return (node == Node::Unit || node == Node::LinearUnit) && unitOwner() == Node::Projected;
    }
    bool isAngular() const
    {
        const Node node = mOpen.last().node;
        return (node == Node::Unit || node == Node::AngularUnit) && unitOwner() == Node::Geographic;
    }

    static void takeFirst(QString &field, const QString &name)
    {
        if (field.isEmpty())
            field = name;
    }
    void takeName(const QString &name)
    {
        mOpen.last().name = name;
        if (mOpen.last().node == Node::Projected)
            takeFirst(mNames.projection, name);
        else if (mOpen.last().node == Node::Geographic)
            takeFirst(mNames.geographic, name);
        else if (isLinear())
            takeFirst(mNames.linearUnit, name);
        else if (isAngular())
            takeFirst(mNames.angularUnit, name);
    }
    void takeFactor(const QString &word)
    {
        if (isAngular() && mNames.angularFactor == 0.0 && mOpen.last().name == mNames.angularUnit)
            mNames.angularFactor = word.toDouble();
    }

    const QString &mText;
    SystemNames &mNames;
    QVector<Open> mOpen;
    int mAt = 0;
};

} // namespace

bool readWellKnownText(const QString &text, SystemNames &names)
{
    return Reader(text, names).read();
}

} // namespace fennimark
