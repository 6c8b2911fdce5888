// SPDX-License-Identifier: MIT
#include "desk/draw/bands.h"
#include <QSemaphore>
#include <QThreadPool>
#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>

namespace meridor {
namespace {

constexpr int kLeastRows = 32; // a thread is not worth less

/// The bands that are left, and what the work raised.
class Bands {
public:
    Bands(int first, int end, int count, const std::function<void(int, int)> &work)
        : mFirst(first), mEnd(end), mCount(count), mWork(work)
    {
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

    void raise() const
    {
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
    const std::function<void(int, int)> &mWork;
    std::atomic<int> mNext{0};
    std::mutex mMutex;
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
    Bands bands(first, end, used * bandsPerThread, work);
    QSemaphore done;
    int started = 0;
    for (int i = 1; i < used; ++i)
        started += QThreadPool::globalInstance()->tryStart([&bands, &done] {
            bands.run();
            done.release();
        });
    bands.run();
    done.acquire(started);
    bands.raise();
}

} // namespace meridor
