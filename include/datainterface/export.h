// SPDX-License-Identifier: MIT
/// Marks the symbols that the shared library DataInterface exports.
#pragma once
#include <QtGlobal>
#ifdef DATAINTERFACE_BUILD
#define DATAINTERFACE_EXPORT Q_DECL_EXPORT
#else
#define DATAINTERFACE_EXPORT Q_DECL_IMPORT
#endif
