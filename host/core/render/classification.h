// SPDX-License-Identifier: MIT
/// Classes of a dataset with their colours, and the class of each value.
#pragma once
#include <QHash>
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/grids/valuesAt.h"
#include "core/render/legend.h"

namespace meridor {

/// How values are divided into classes and coloured.
struct ClassRule {
    /// A name of classMethods(); empty: the limits if there are any, else natural breaks of numbers
    /// and the unique values of texts.
    QString method;
    /// Of equal intervals, quantiles and natural breaks.
    int count = 5;
    /// Own limits, ascending. Values beyond them get a class of their own at that end.
    QVector<double> limits;
    QString palette; ///< empty: one that suits the method
    bool reversed = false;
};

/// "equal", "quantile", "jenks", "stddev", "box" and "unique".
MERIDOR_EXPORT QStringList classMethods();
/// Raises a Failure of kind Misused for parts of a rule that do not exist or contradict each other.
MERIDOR_EXPORT void requireRule(const ClassRule &rule);

class MERIDOR_EXPORT Classification {
public:
    /// Of the values of the objects that exist at these times; of all times if there are none. Half
    /// open classes are those of stddev (limits at the mean and one and two standard deviations,
    /// divided by n, on each side) and box (J. W. Tukey 1977: quartiles, by linear interpolation,
    /// and fences one and a half interquartile ranges beyond them). Unique values are those of texts
    /// and integers: the commonest, and "others" if there are more than the palette has colours.
    /// Raises a Failure.
    Classification(int dataset, const QVector<qint64> &times, const ClassRule &rule,
                   int realization = 0);

    /// One for each class, in ascending order, without counts.
    const QVector<LegendEntry> &entries() const { return mEntries; }
    /// Ascending, one more than there are classes; empty for unique values.
    const QVector<double> &limits() const { return mLimits; }
    /// The class of the value of an object or cell; -1 if it is missing or in no class.
    int of(const ValuesAt &values, int index) const
    {
        if (values.missing.contains(index))
            return -1;
        return values.numeric ? of(values.numbers[index]) : of(values.texts[index]);
    }
    int of(double value) const;
    int of(const QString &text) const { return mTexts.value(text, mOthers); }
    /// Such as "natural breaks"; empty for unique values.
    const QString &description() const { return mDescription; }

private:
    void divide(int dataset, const QVector<qint64> &times, const ClassRule &rule);
    void enumerate(int dataset, const QVector<qint64> &times, const ClassRule &rule);

    QVector<LegendEntry> mEntries;
    QVector<double> mLimits;
    QHash<QString, int> mTexts;
    int mOthers = -1;
    bool mUnique = false;
    int mRealization;
    QString mDescription;
};

} // namespace meridor
