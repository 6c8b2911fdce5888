// SPDX-License-Identifier: MIT
#include "datainterface/VersionAPI.h"

const int serializationVersionNumber = 400021;
const int productVersionNumber = 400021;
const QString applicationName = QStringLiteral("Meridor");
const QString applicationVendor = QStringLiteral("Kestrelwick");
int dataInterfaceVersionLoading = 0;
QString dataInterfaceVersionStringLoading;

void SetDataInterfaceVersionLoading(const QString &version)
{
    dataInterfaceVersionStringLoading = version;
    const auto part = [&version](int i) { return version.section(QLatin1Char('.'), i, i).toInt(); };
    // Unsigned, so that an absurd text wraps instead of overflowing.
    dataInterfaceVersionLoading =
        static_cast<int>(static_cast<unsigned>(part(0)) * 100000U
                         + static_cast<unsigned>(part(1)) * 1000U + static_cast<unsigned>(part(2)));
}
