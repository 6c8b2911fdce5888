// SPDX-License-Identifier: MIT
// The reader of weights files: the first byte selects the format. Every weight that is read must be
// one that a weight set can store.
#include <QBuffer>
#include <cstdlib>
#include "core/formats/weightsFile.h"
#include "core/project/failure.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    using namespace meridor;
    if (size == 0)
        return 0;
    constexpr WeightsFormat kFormats[] = {WeightsFormat::Gal, WeightsFormat::Gwt,
                                          WeightsFormat::Csv};
    const WeightsFormat format = kFormats[data[0] % 3];
    QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    try {
        for (const WeightsFile::Ego &ego : readWeights(file, format, QStringLiteral("f")).egos)
            for (const WeightsFile::Link &link : ego.links)
                if (static_cast<float>(link.weight) - static_cast<float>(link.weight) != 0.0f)
                    std::abort(); // no weight set can store it
    } catch (const Failure &) {
    }
    return 0;
}
