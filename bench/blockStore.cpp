// SPDX-License-Identifier: MIT
// What does a block cost against one plain call of the operating system for each block, and against
// LMDB?
//
// The store writes saved blocks only when the cache overflows. So the time by which a first pass of
// reading is slower than a second one counts as saving.
//
// There are three phases in the same random order: all blocks are saved, as many are read at
// random, and as many are replaced at random by blocks of other sizes. "plain" is one pwrite or
// pread for each block, at positions of fixed size. LMDB runs without syncs, with one transaction
// for each phase. "kept" is one pread for each block into successive parts of a buffer of the
// cache's size: the best that a reader with such a cache can reach. Every number is the median over
// rounds in which the three take turns. For all three, the arguments of the calls are in memory
// before the clock starts.
#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <lmdb.h>
#include <malloc.h>
#include <random>
#include <unistd.h>
#include <vector>
#include "Common/DataManager.h"
#include "datainterface/DataBlocks.h"
#include "ratios.h"

namespace {

constexpr int kCacheBytes = 64 << 20;

constexpr size_t kPhases = 3;

struct Case {
    const char *name;
    int count;
    int bytes;
    int rounds;
    std::array<double, kPhases> targets; // store / plain
};

// The orders and sizes of blocks, which are the same for all peers.
struct Work {
    explicit Work(const Case &which)
        : count(which.count), bytes(which.bytes), contents(2 * which.bytes, '\0')
    {
        std::mt19937 random(7);
        for (char &byte : contents)
            byte = static_cast<char>(random());
        std::uniform_int_distribution<int> anyBlock(0, count - 1);
        std::uniform_int_distribution<int> anySize(bytes / 2, bytes + bytes / 2);
        for (int i = 0; i < count; ++i) {
            order.push_back(anyBlock(random));
            sizes.push_back(anySize(random));
        }
    }
    int count;
    int bytes;
    QByteArray contents;
    std::vector<int> order;
    std::vector<int> sizes;
};

enum Phase { Save, Read, Replace, ReadKept };
using Times = std::array<double, 4>; // seconds

void check(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

// Measures the calls alone: their arguments are made before, a few at a time.
template <class Make, class Call> double secondsOfEach(int count, Make make, Call call)
{
    constexpr int kAhead = 16;
    std::vector<QByteArray> made(kAhead);
    double seconds = 0;
    for (int first = 0; first < count; first += kAhead) {
        const int end = std::min(first + kAhead, count);
        for (int i = first; i < end; ++i)
            made[static_cast<size_t>(i - first)] = make(i);
        seconds += ratios::secondsOf([&] {
            for (int i = first; i < end; ++i)
                call(i, made[static_cast<size_t>(i - first)]);
        });
    }
    return seconds;
}

double residentMegabytes()
{
    QFile status("/proc/self/statm");
    check(status.open(QIODevice::ReadOnly), "statm");
    return status.readAll().split(' ').at(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE))
           / 1e6;
}

Times runStore(const Work &work, const QString &directory, double &megabytes)
{
    malloc_trim(0);
    const double before = residentMegabytes();
    InitializeDataManager(directory, kCacheBytes);
    const char *contents = work.contents.constData();
    Times times{};
    times[Save] = secondsOfEach(
        work.count, [&](int) { return QByteArray(contents, work.bytes); },
        [](int i, const QByteArray &bytes) { check(SaveDataBlock(bytes) == i, "save"); });
    QByteArray found;
    const auto readAll = [&] {
        for (const int id : work.order)
            check(ReadDataBlock(id, found) && found.size() == work.bytes, "read");
    };
    times[Save] +=
        ratios::secondsOf(readAll); // also writes the saved blocks that are still in the cache
    times[Read] = ratios::secondsOf(readAll);
    times[Save] -= times[Read];
    megabytes = residentMegabytes() - before;
    times[Replace] = secondsOfEach(
        work.count, [&](int i) { return QByteArray(contents, work.sizes[static_cast<size_t>(i)]); },
        [&](int i, const QByteArray &bytes) {
            ReplaceDataBlock(work.order[static_cast<size_t>(i)], bytes);
        });
    ClearDataManager();
    return times;
}

Times runPlain(const Work &work, const QString &directory)
{
    const QByteArray path = QFile::encodeName(directory + "/plain");
    const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    check(file >= 0, "open");
    const char *contents = work.contents.constData();
    std::vector<char> bytes(static_cast<size_t>(2 * work.bytes));
    const auto place = [&](int id) { return static_cast<off_t>(id) * work.bytes * 3 / 2; };
    Times times{};
    times[Save] = ratios::secondsOf([&] {
        for (int i = 0; i < work.count; ++i)
            check(::pwrite(file, contents, static_cast<size_t>(work.bytes), place(i)) == work.bytes,
                  "pwrite");
    });
    times[Read] = ratios::secondsOf([&] {
        for (const int id : work.order)
            check(::pread(file, bytes.data(), static_cast<size_t>(work.bytes), place(id))
                      == work.bytes,
                  "pread");
    });
    std::vector<char> kept(kCacheBytes, 'x');
    times[ReadKept] = ratios::secondsOf([&] {
        size_t at = 0;
        for (const int id : work.order) {
            check(::pread(file, &kept[at], static_cast<size_t>(work.bytes), place(id))
                      == work.bytes,
                  "pread");
            at += static_cast<size_t>(work.bytes);
            at = at + static_cast<size_t>(work.bytes) > kept.size() ? 0 : at;
        }
    });
    times[Replace] = ratios::secondsOf([&] {
        for (size_t i = 0; i < work.order.size(); ++i) {
            const int size = work.sizes[i];
            check(::pwrite(file, contents, static_cast<size_t>(size), place(work.order[i])) == size,
                  "pwrite");
        }
    });
    ::close(file);
    ::unlink(path.constData());
    return times;
}

Times runLmdb(const Work &work, const QString &directory)
{
    const QByteArray path = QFile::encodeName(directory + "/lmdb");
    MDB_env *environment = nullptr;
    check(mdb_env_create(&environment) == 0
              && mdb_env_set_mapsize(environment, size_t(16) << 30) == 0
              && mdb_env_open(environment, path.constData(),
                              MDB_NOSUBDIR | MDB_NOSYNC | MDB_WRITEMAP, 0600)
                     == 0,
          "mdb_env_open");
    MDB_dbi table = 0;
    const auto inTransaction = [&](const std::function<void(MDB_txn *)> &call) {
        MDB_txn *transaction = nullptr;
        check(mdb_txn_begin(environment, nullptr, 0, &transaction) == 0, "mdb_txn_begin");
        check(mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY | MDB_CREATE, &table) == 0,
              "mdb_dbi_open");
        call(transaction);
        check(mdb_txn_commit(transaction) == 0, "mdb_txn_commit");
    };
    const auto put = [&](MDB_txn *transaction, int id, int size, unsigned flags) {
        MDB_val key{sizeof(int), &id};
        MDB_val data{static_cast<size_t>(size), const_cast<char *>(work.contents.constData())};
        check(mdb_put(transaction, table, &key, &data, flags) == 0, "mdb_put");
    };
    Times times{};
    times[Save] = ratios::secondsOf([&] {
        inTransaction([&](MDB_txn *transaction) {
            for (int i = 0; i < work.count; ++i)
                put(transaction, i, work.bytes, MDB_APPEND);
        });
    });
    times[Read] = ratios::secondsOf([&] {
        inTransaction([&](MDB_txn *transaction) {
            for (int id : work.order) {
                MDB_val key{sizeof(int), &id};
                MDB_val data{};
                check(mdb_get(transaction, table, &key, &data) == 0, "mdb_get");
                const QByteArray bytes(static_cast<const char *>(data.mv_data),
                                       static_cast<int>(data.mv_size));
                check(bytes.size() == work.bytes, "mdb_get");
            }
        });
    });
    times[Replace] = ratios::secondsOf([&] {
        inTransaction([&](MDB_txn *transaction) {
            for (size_t i = 0; i < work.order.size(); ++i)
                put(transaction, work.order[i], work.sizes[i], 0);
        });
    });
    mdb_env_close(environment);
    ::unlink(path.constData());
    const QByteArray lock = path + "-lock";
    ::unlink(lock.constData());
    return times;
}

void runCase(const Case &which)
{
    const QTemporaryDir directory;
    const Work work(which);
    std::vector<Times> store, plain, lmdb;
    double megabytes = 0;
    for (int round = 0; round < which.rounds; ++round) {
        double used = 0;
        store.push_back(runStore(work, directory.path(), used));
        if (round == 0)
            megabytes = used; // later rounds reuse memory of the heap
        plain.push_back(runPlain(work, directory.path()));
        lmdb.push_back(runLmdb(work, directory.path()));
    }
    // The median of all rounds, in microseconds a block.
    const auto middle = [&which](const std::vector<Times> &times, Phase phase) {
        std::vector<double> values;
        for (const Times &round : times)
            values.push_back(round[phase] * 1e6 / which.count);
        return ratios::median(values);
    };
    ratios::head(which.name);
    const char *names[] = {"save", "read at random", "replace at random"};
    const char *calls[] = {"one pwrite each", "one pread each", "one pwrite each"};
    for (const Phase phase : {Save, Read, Replace}) {
        const double ours = middle(store, phase);
        ratios::row(names[phase], ours, calls[phase], middle(plain, phase), which.targets[phase],
                    "us");
        std::printf("%-52s %12s %-28s %9.4g us %7.3f\n", "", "", "LMDB", middle(lmdb, phase),
                    ours / middle(lmdb, phase));
    }
    std::printf("%-52s %12s %-28s %9.4g us %7.3f\n", names[Read], "", "one pread each, kept",
                middle(plain, ReadKept), middle(store, Read) / middle(plain, ReadKept));
    const double allowed = kCacheBytes / 1e6 + 100.0 * which.count / 1e6 + 40;
    ratios::row("resident after reading", megabytes, "cache, 100 bytes a block, 40", allowed, 1.0,
                "MB");
}

} // namespace

int main()
{
    runCase(
        {"1,000,000 blocks of 100 bytes, 64 MiB of cache", 1000000, 100, 5, {0.20, 0.75, 0.55}});
    runCase({"20,000 blocks of 64 KiB, 64 MiB of cache", 20000, 65536, 3, {1.2, 1.6, 1.3}});
    return ratios::missed > 0;
}
