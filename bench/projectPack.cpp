// SPDX-License-Identifier: MIT
// What does saving and loading the blocks of a project cost beyond the packing itself?
//
// Save, default level, against qCompress at level 9 of the same arrays; load against qUncompress of
// the same packs; the faster levels against the default, with the size of the file. The blocks are
// slices of a smooth field with noise in the low bits, as measured data are.
#include <QBuffer>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>
#include "datainterface/DataBlocks.h"
#include "ratios.h"

namespace {

constexpr int kBlocks = 400;
constexpr int kValues = 4000;
constexpr int kRounds = 3;

std::vector<QByteArray> makeBlocks()
{
    std::mt19937 random(11);
    std::normal_distribution<double> noise;
    std::vector<QByteArray> blocks;
    for (int block = 0; block < kBlocks; ++block) {
        std::vector<double> values;
        for (int i = 0; i < kValues; ++i)
            values.push_back(std::round(1000 * (10 * std::sin(i / 200.0 + block) + noise(random)))
                             / 1000);
        blocks.emplace_back(reinterpret_cast<const char *>(values.data()),
                            kValues * int(sizeof(double)));
    }
    return blocks;
}

struct Measured {
    double save;
    double load;
    qint64 bytes;
};

Measured measure(int level)
{
    VORN_SetProjectCompression(level);
    QByteArray file;
    Measured measured{};
    measured.save = ratios::secondsOf([&] {
        QDataStream out(&file, QIODevice::WriteOnly);
        if (!SaveProjectData(out, true))
            std::fprintf(stderr, "save failed\n");
    });
    measured.load = ratios::secondsOf([&] {
        ResetDataManager();
        QDataStream in(file);
        if (!RestoreProjectData(in, true))
            std::fprintf(stderr, "load failed\n");
    });
    measured.bytes = file.size();
    return measured;
}

} // namespace

int main()
{
    const QTemporaryDir directory;
    const std::vector<QByteArray> blocks = makeBlocks();
    InitializeDataManager(directory.path(), 64 << 20);
    for (const QByteArray &block : blocks)
        SaveDataBlock(block);

    std::vector<double> saveRatios, loadRatios;
    std::vector<QByteArray> packs(blocks.size());
    Measured byDefault{};
    for (int round = 0; round < kRounds; ++round) {
        const double pack = ratios::secondsOf([&] {
            for (size_t i = 0; i < blocks.size(); ++i)
                packs[i] = qCompress(blocks[i], 9);
        });
        const double unpack = ratios::secondsOf([&] {
            for (const QByteArray &packed : packs)
                qUncompress(packed);
        });
        byDefault = measure(0);
        saveRatios.push_back(byDefault.save / pack);
        loadRatios.push_back(byDefault.load / unpack);
    }
    ratios::head("400 blocks of 4000 doubles, the time of the packing alone as 1");
    ratios::row("save at the default level", ratios::median(saveRatios), "qCompress at level 9",
                1.0, 1.03, "");
    ratios::row("load", ratios::median(loadRatios), "qUncompress", 1.0, 0.7, "");
    std::printf("\n");
    std::printf("%-8s %10s %14s %12s\n", "level", "save s", "default/save", "file size");
    std::printf("%-8s %10.3f %14.1f %11.1f%%\n", "default", byDefault.save, 1.0, 100.0);
    for (const int level : {1, 3, 6, 9, 12}) {
        const Measured measured = measure(level);
        std::printf(
            "%-8d %10.3f %14.1f %11.1f%%\n", level, measured.save, byDefault.save / measured.save,
            100.0 * static_cast<double>(measured.bytes) / static_cast<double>(byDefault.bytes));
    }
    ClearDataManager();
    return ratios::missed > 0;
}
