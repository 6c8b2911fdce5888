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

/// The version number of the file being read. Every reader of a persistent class decides by it what
/// the stream holds; it stays as it is when a load ends.
extern DATAINTERFACE_EXPORT int dataInterfaceVersionLoading;
extern DATAINTERFACE_EXPORT QString dataInterfaceVersionStringLoading;

/// Stores the text and computes the number from it.
DATAINTERFACE_EXPORT void SetDataInterfaceVersionLoading(const QString &version);
