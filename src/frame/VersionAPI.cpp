// SPDX-License-Identifier: MIT
#include "datainterface/VersionAPI.h"

// The number of the newest form of project files. It changes with the form, not with the product.
const int serializationVersionNumber = 400021;
// The build makes this of the version of the CMake project.
const int productVersionNumber = DATAINTERFACE_PRODUCT_VERSION;
static_assert(DATAINTERFACE_PRODUCT_VERSION >= 400021, "The product reads its own files.");
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
