// SPDX-License-Identifier: MIT
#include "fennimark/FMProjectionInfo.h"
#include <QStringList>
#include "object/wellKnownText.h"

namespace {

constexpr int kUnitRadian = 9101;
constexpr int kUnitDegree = 9102;
constexpr int kUnitGrad = 9105;
constexpr int kLines = 6;
constexpr int kMaxBytes = 1 << 22;

int angularUnitCode(double radians)
{
    const auto is = [radians](double unit) { return qAbs(radians - unit) <= 1.0e-9 * unit; };
    constexpr double kPi = 3.14159265358979323846;
    if (is(1.0))
        return kUnitRadian;
    if (is(kPi / 180.0))
        return kUnitDegree;
    return is(kPi / 200.0) ? kUnitGrad : 0;
}

} // namespace

FMProjectionInfo::FMProjectionInfo() = default;
FMProjectionInfo::FMProjectionInfo(const FMProjectionInfo &other) = default;
FMProjectionInfo &FMProjectionInfo::operator=(const FMProjectionInfo &other) = default;
FMProjectionInfo::~FMProjectionInfo() = default;

bool FMProjectionInfo::FromWkt(const QString &wkt, FMProjectionInfo &info)
{
    fennimark::SystemNames names;
    if (!fennimark::readWellKnownText(wkt, names))
        return false;
    info.mProjectionName = names.projection;
    info.mGeographicCSName = names.geographic;
    info.mLinUnitName = names.linearUnit;
    info.mAngUnitName = names.angularUnit;
    info.mAngUnitCode = angularUnitCode(names.angularFactor);
    info.mWkt = wkt;
    return true;
}

QByteArray FMProjectionInfo::ToUtf8() const
{
    const QStringList lines{mProjectionName,
                            mGeographicCSName,
                            mLinUnitName,
                            mAngUnitName,
                            QString::number(mAngUnitCode),
                            mWkt};
    return lines.join(QLatin1Char('\n')).toUtf8();
}

bool FMProjectionInfo::FromUtf8(const QByteArray &bytes, FMProjectionInfo &info)
{
    if (bytes.size() > kMaxBytes)
        return false;
    const QString text = QString::fromUtf8(bytes);
    const QStringList lines = text.split(QLatin1Char('\n'));
    bool isNumber = false;
    const int code = lines.size() < kLines ? 0 : lines[4].toInt(&isNumber);
    if (!isNumber || text.toUtf8() != bytes)
        return false;
    info.mProjectionName = lines[0];
    info.mGeographicCSName = lines[1];
    info.mLinUnitName = lines[2];
    info.mAngUnitName = lines[3];
    info.mAngUnitCode = code;
    info.mWkt = lines.mid(kLines - 1).join(QLatin1Char('\n'));
    return true;
}
