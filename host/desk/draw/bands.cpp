// SPDX-License-Identifier: MIT
#include "desk/draw/bands.h"
#include <QThreadPool>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>

namespace meridor {
namespace {

constexpr int kLeastRows = 32; // a thread is not worth less

/// The bands that are left, and what the work raised. Threads share it, since one of the pool may come
/// to it when all is done and the caller has gone.
class Bands {
public:
    Bands(int first, int end, int count, const std::function<void(int, int)> &work)
        : mFirst(first), mEnd(end), mCount(count), mWork(work)
    {
    }

    /// Called by further threads. Does nothing once the caller has called finish().
    void help()
    {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            if (mIsClosed)
                return;
            ++mHelpers;
        }
        run();
        const std::lock_guard<std::mutex> lock(mMutex);
        --mHelpers;
        mLeft.notify_one();
    }

    void run()
    {
        try {
            for (int band = mNext++; band < mCount; band = mNext++)
                mWork(edge(band), edge(band + 1));
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mMutex);
            mRaised = std::current_exception();
        }
    }

    /// Waits for the threads that have begun a band: those that have not are late, since the machine
    /// is busy, and are not waited for.
    void finish()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mIsClosed = true;
        mLeft.wait(lock, [this] { return mHelpers == 0; });
        if (mRaised)
            std::rethrow_exception(mRaised);
    }

private:
    int edge(int band) const
    {
        return mFirst + static_cast<int>(qint64(mEnd - mFirst) * band / mCount);
    }

    const int mFirst;
    const int mEnd;
    const int mCount;
    const std::function<void(int, int)> &mWork; // of the caller, until finish() returns
    std::atomic<int> mNext{0};
    std::mutex mMutex;
    std::condition_variable mLeft;
    int mHelpers = 0;
    bool mIsClosed = false;
    std::exception_ptr mRaised;
};

} // namespace

void inBands(int first, int end, int threads, int bandsPerThread,
             const std::function<void(int, int)> &work)
{
    const int used = std::clamp((end - first) / kLeastRows, 1, std::max(1, threads));
    if (used == 1) {
        if (first < end)
            work(first, end);
        return;
    }
    const auto bands = std::make_shared<Bands>(first, end, used * bandsPerThread, work);
    for (int i = 1; i < used; ++i)
        QThreadPool::globalInstance()->tryStart([bands] { bands->help(); });
    bands->run();
    bands->finish();
}

} // namespace meridor
