// SPDX-License-Identifier: MIT
/// Marks what the shared library MeridorCore exports.
#pragma once
#include <QtGlobal>
#ifdef MERIDOR_CORE_BUILD
#define MERIDOR_EXPORT Q_DECL_EXPORT
#else
#define MERIDOR_EXPORT Q_DECL_IMPORT
#endif
