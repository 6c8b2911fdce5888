// SPDX-License-Identifier: MIT
/// The version of the product and of the file that is being read. Version numbers are
/// major * 100000 + minor * 1000 + build: "4.00.021" is 400021.
#pragma once
#include <QString>
#include "datainterface/export.h"

extern DATAINTERFACE_EXPORT const int serializationVersionNumber;
extern DATAINTERFACE_EXPORT const int productVersionNumber;
extern DATAINTERFACE_EXPORT const QString applicationName;
extern DATAINTERFACE_EXPORT const QString applicationVendor;

/// The version number of the file that is being read, which determines the form that
/// RestoreFromStream and operator>> of the persistent classes expect. It does not change when a
/// load ends.
extern DATAINTERFACE_EXPORT int dataInterfaceVersionLoading;
extern DATAINTERFACE_EXPORT QString dataInterfaceVersionStringLoading;

/// Sets both variables: stores the text and computes the number from it.
DATAINTERFACE_EXPORT void SetDataInterfaceVersionLoading(const QString &version);
