// SPDX-License-Identifier: MIT
/// Free-form tags of a geography or a dataset.
#pragma once
#include <QDataStream>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>
#include "datainterface/export.h"

/// Values by name, ordered by name. A plain value.
class DATAINTERFACE_EXPORT MMetaData {
public:
    MMetaData() = default;
    MMetaData(const MMetaData &) = default;
    MMetaData &operator=(const MMetaData &) = default;
    virtual ~MMetaData();

    /// Sets or replaces a tag. False, with nothing changed, for a value that a project file cannot
    /// hold. The file can hold Qt's value types: numbers, bool, QChar, QString, QByteArray, lists
    /// of the last two, QBitArray, dates and times, QUrl, QUuid, QLocale, regular expressions,
    /// JSON, points, sizes, rectangles, lines, polygons, QColor, QTransform, QMatrix4x4, QVector2D
    /// to QVector4D, QQuaternion; and lists, maps and hashes of them, nested to 32 levels,
    /// with one value for each key.
    bool setTag(const QString &key, const QVariant &value);
    /// Appends text without a separator; creates the tag when it is absent. False when the tag
    /// holds a value that is not a text.
    bool addTextToTag(const QString &key, const QString &text);
    /// Whether the key has a value.
    bool tagExists(const QString &key) const;
    /// The keys, ascending.
    QList<QString> getTags() const;
    /// An invalid value when the key is absent; never inserts.
    QVariant operator[](const QString &key) const;
    const QMap<QString, QVariant> &values() const { return mTags; }

private:
    friend DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MMetaData &metaData);

    QMap<QString, QVariant> mTags;
};

DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MMetaData &metaData);
/// Reads the form of dataInterfaceVersionLoading: before 180000 every value is a text.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MMetaData &metaData);
