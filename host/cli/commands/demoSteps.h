// SPDX-License-Identifier: MIT
/// Runs the steps of the demo and reports the result, the correctness and the duration of each.
#pragma once
#include <QElapsedTimer>
#include "cli/console.h"

namespace meridor {

class DemoSteps {
public:
    explicit DemoSteps(const Console &console) : mConsole(console) {}

    /// @param work  returns its result as text; it calls expect() for each figure.
    template <class Work> void step(const char *what, Work work)
    {
        QElapsedTimer timer;
        timer.start();
        mRight = true;
        const QString result = work();
        const double milliseconds = static_cast<double>(timer.nsecsElapsed()) * 1e-6;
        mWrong += !mRight;
        mSteps.append(QJsonObject{{QStringLiteral("step"), QLatin1String(what)},
                                  {QStringLiteral("result"), result},
                                  {QStringLiteral("right"), mRight},
                                  {QStringLiteral("milliseconds"), milliseconds}});
        if (!mConsole.json)
            mConsole.print(QStringLiteral("%1 %2 %3 ms%4")
                               .arg(QLatin1String(what), -11)
                               .arg(result, -88)
                               .arg(milliseconds, 8, 'f', 1)
                               .arg(mRight ? QString() : QStringLiteral("  WRONG")));
    }

    /// Called within a step; false marks the step as wrong.
    void expect(bool right) { mRight = mRight && right; }

    /// Prints the summary. True if all steps were right.
    bool finish() const
    {
        if (mConsole.json)
            mConsole.print(
                QJsonObject{{QStringLiteral("steps"), mSteps}, {QStringLiteral("wrong"), mWrong}});
        else
            mConsole.print(mWrong == 0 ? QStringLiteral("every figure is right")
                                       : QStringLiteral("%1 figures are wrong").arg(mWrong));
        return mWrong == 0;
    }

private:
    const Console &mConsole;
    QJsonArray mSteps;
    int mWrong = 0;
    bool mRight = true;
};

} // namespace meridor
