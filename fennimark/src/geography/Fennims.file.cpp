// SPDX-License-Identifier: MIT
#include "fennimark/Fennims.h"
#include <QDataStream>
#include <QFile>
#include <algorithm>
#include "file/geometryFile.h"
#include "geography/fennimsState.h"

using namespace fennimark;

namespace {

bool sameHull(const RectInT &a, const RectInT &b)
{
    return a.xMin == b.xMin && a.xMax == b.xMax && a.yMin == b.yMin && a.yMax == b.yMax
           && a.start == b.start && a.end == b.end && a.flags == b.flags;
}

} // namespace

bool Fennims::Open(QDataStream &in, Progress progress)
{
    mChains.clear();
    d->chains.clear();
    d->store.clear();
    d->observationLists.clear();
    d->contiguity.clear();
    d->name.clear();
    d->projection = FMProjectionInfo();
    d->hasType = false;

    FileImage image;
    FMProjectionInfo projection;
    if (!image.read(in, progress) || !FMProjectionInfo::FromUtf8(image.projection, projection)
        || !d->store.assign(std::move(image.content)) || !sameHull(d->store.hull(), image.hull)) {
        d->store.clear();
        if (in.status() == QDataStream::Ok)
            in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    d->name = QString::fromUtf8(image.name);
    d->projection = projection;
    d->hasType = true;
    quint32 first = 0;
    for (const ChainEntry &entry : image.chains) {
        FMObjectChain &chain = d->chains.emplace_back();
        chain.id = entry.id;
        ObservationSource::place(chain, &d->store, first, entry.count);
        first += entry.count;
    }
    // In descending order: inserting a key below all others at the beginning needs no search.
    std::for_each(d->chains.rbegin(), d->chains.rend(), [this](FMObjectChain &chain) {
        mChains.insert(mChains.cbegin(), chain.id, &chain);
    });
    return true;
}

void Fennims::Private::describe(const QMap<int, FMObjectChain *> &written, FileContent &content,
                                std::vector<quint64> &buffer) const
{
    content.name = name.toUtf8();
    content.projection = projection.ToUtf8();
    content.kind = store.kind();
    content.tolerance = store.tolerance();
    for (const FMObjectChain *chain : written) {
        content.chains.push_back({chain->id, ObservationSource::countOf(*chain)});
        for (quint32 i = 0; i < ObservationSource::countOf(*chain); ++i)
            content.recordsByChain.push_back(
                quint32(store.observation(ObservationSource::firstOf(*chain), i).second) - 1);
    }
    content.order = content.recordsByChain;
    // Record numbers follow the curve already.
    std::sort(content.order.begin(), content.order.end());
    content.rangeOf = [this](quint32 record) { return store.range(record); };
    content.geometryOf = [this, &buffer](quint32 record, GeometryView &view) {
        view.bounds = store.box(record);
        return store.kind() == ObjectKind::Point || store.view(record, view, buffer);
    };
}

bool Fennims::Save(QDataStream &out, Progress progress)
{
    FileContent content;
    std::vector<quint64> buffer;
    d->describe(mChains, content, buffer);
    return content.write(out, progress);
}

bool Fennims::CreateSubsetFromIds(const char *path, const QVector<int> &chainIds, Progress progress)
{
    QMap<int, FMObjectChain *> chosen;
    for (const int id : chainIds) {
        FMObjectChain *chain = mChains.value(id);
        if (!chain)
            return false;
        chosen.insert(id, chain);
    }
    FileContent content;
    std::vector<quint64> buffer;
    d->describe(chosen, content, buffer);
    return path && replaceFile(QFile::decodeName(path), [&](QDataStream &out) {
               return content.write(out, progress);
           });
}
