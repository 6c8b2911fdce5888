// SPDX-License-Identifier: MIT
/// The coordinate system of a geography: names and units. Nothing is projected here.
#pragma once
#include <QByteArray>
#include <QString>
#include "fennimark/export.h"

/// A plain value: copies are independent.
class FENNIMARK_EXPORT FMProjectionInfo {
public:
    FMProjectionInfo();
    FMProjectionInfo(const FMProjectionInfo &other);
    FMProjectionInfo &operator=(const FMProjectionInfo &other);
    ~FMProjectionInfo();

    /// Empty for coordinates that are not projected.
    QString GetProjectionName() const { return mProjectionName; }
    QString GetGeographicCSName() const { return mGeographicCSName; }
    QString GetLinUnitName() const { return mLinUnitName; }
    QString GetAngUnitName() const { return mAngUnitName; }
    /// The well-known text that the names were read from; empty when there was none.
    QString GetWkt() const { return mWkt; }

    /// Reads names and units from well-known text of a coordinate system, form 1 or 2 (ISO 19162),
    /// projected, geographic, compound or bound. At most 2^20 characters and 64 levels.
    /// @return false, with `info` unchanged, when the text is not a well-formed coordinate system
    /// of one of these kinds.
    static bool FromWkt(const QString &wkt, FMProjectionInfo &info);

    /// The form stored in geometry files: UTF-8, the four names and the unit code on one line each,
    /// then the well-known text.
    QByteArray ToUtf8() const;
    /// Reads the form that ToUtf8 writes, at most 4 MiB.
    /// @return false, with `info` unchanged, when ToUtf8 cannot have written the bytes.
    static bool FromUtf8(const QByteArray &bytes, FMProjectionInfo &info);

    /// EPSG code of the angular unit: 9101 radian, 9102 degree, 9105 grad, 0 unknown.
    int mAngUnitCode = 0;

private:
    QString mProjectionName;
    QString mGeographicCSName;
    QString mLinUnitName;
    QString mAngUnitName;
    QString mWkt;
};
