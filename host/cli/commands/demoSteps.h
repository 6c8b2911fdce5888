// SPDX-License-Identifier: MIT
/// The frame of the demo: where its files are, and its steps with their results.
#pragma once
#include <QElapsedTimer>
#include <QJsonObject>
#include "cli/commands/commands.h"

namespace meridor {

/// The sample data, and the directory of the results.
struct DemoPlace {
    const Context &context;
    QString directory;
    QString samples;

    QString result(const char *name) const
    {
        return directory + QLatin1Char('/') + QLatin1String(name);
    }
    QString sample(const char *name) const
    {
        return samples + QLatin1Char('/') + QLatin1String(name);
    }
};

/// Runs the steps of the demo and reports the result, the correctness and the duration of each.
class DemoSteps {
public:
    explicit DemoSteps(const Console &console) : mConsole(console) {}

    /// Begins a part of the story.
    void chapter(const char *title)
    {
        if (!mConsole.json)
            mConsole.print((mSteps.isEmpty() ? QString() : QStringLiteral("\n"))
                           + QLatin1String(title));
        mChapter = QLatin1String(title);
    }

    /// @param work  returns its result as text; it calls expect() for each figure.
    template <class Work> void step(const char *what, Work work)
    {
        QElapsedTimer timer;
        timer.start();
        mRight = true;
        const QString result = work();
        const double milliseconds = static_cast<double>(timer.nsecsElapsed()) * 1e-6;
        mWrong += !mRight;
        mSteps.append(QJsonObject{{QStringLiteral("chapter"), mChapter},
                                  {QStringLiteral("step"), QLatin1String(what)},
                                  {QStringLiteral("result"), result},
                                  {QStringLiteral("right"), mRight},
                                  {QStringLiteral("milliseconds"), milliseconds}});
        if (!mConsole.json)
            mConsole.print(QStringLiteral("  %1 %2 %3 ms%4")
                               .arg(QLatin1String(what), -10)
                               .arg(result, -92)
                               .arg(milliseconds, 7, 'f', 1)
                               .arg(mRight ? QString() : QStringLiteral("  WRONG")));
    }

    /// Called within a step; false marks the step as wrong.
    void expect(bool right) { mRight = mRight && right; }

    /// Prints the summary. True if all steps were right.
    bool finish(const QString &report) const
    {
        if (mConsole.json)
            mConsole.print(QJsonObject{{QStringLiteral("steps"), mSteps},
                                       {QStringLiteral("wrong"), mWrong},
                                       {QStringLiteral("report"), report}});
        else
            mConsole.print(
                QStringLiteral("\n%1 in %2 s. To look at it all: %3")
                    .arg(mWrong == 0 ? QStringLiteral("every figure is right")
                                     : QStringLiteral("%1 figures are wrong").arg(mWrong),
                         QString::number(static_cast<double>(mTimer.elapsed()) * 1e-3, 'f', 1),
                         report));
        return mWrong == 0;
    }

private:
    static QElapsedTimer started()
    {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }

    const Console &mConsole;
    QElapsedTimer mTimer = started();
    QString mChapter;
    QJsonArray mSteps;
    int mWrong = 0;
    bool mRight = true;
};

} // namespace meridor
