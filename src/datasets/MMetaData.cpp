// SPDX-License-Identifier: MIT
#include "datainterface/MMetaData.h"
#include "Common/detail/streams.h"
#include "frame/loadContext.h"

namespace {

constexpr qint64 kMinTextPairBytes = 8;

} // namespace

MMetaData::~MMetaData() = default;

bool MMetaData::setTag(const QString &key, const QVariant &value)
{
    if (!datainterface::isStorable(value))
        return false;
    mTags.insert(key, value);
    return true;
}

bool MMetaData::addTextToTag(const QString &key, const QString &text)
{
    const auto tag = mTags.find(key);
    if (tag == mTags.end()) {
        mTags.insert(key, text);
        return true;
    }
    if (tag->type() != QVariant::String)
        return false;
    *tag = QString(tag->toString() + text);
    return true;
}

bool MMetaData::tagExists(const QString &key) const
{
    return mTags.contains(key);
}

QList<QString> MMetaData::getTags() const
{
    return mTags.keys();
}

QVariant MMetaData::operator[](const QString &key) const
{
    return mTags.value(key);
}

QDataStream &operator<<(QDataStream &out, const MMetaData &metaData)
{
    datainterface::writeVariantMap(out, metaData.values());
    return out;
}

QDataStream &operator>>(QDataStream &in, MMetaData &metaData)
{
    if (datainterface::loadContext().since(datainterface::fileVersions::kTagsAreVariants)) {
        datainterface::readVariantMap(in, metaData.mTags);
        return in;
    }
    QMap<QString, QString> texts;
    datainterface::readMap(in, texts, kMinTextPairBytes);
    metaData.mTags.clear();
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        metaData.mTags.insert(text.key(), text.value());
    return in;
}
