// SPDX-License-Identifier: MIT
/// Marks what the shared library Fennimark exports.
#pragma once
#include <QtGlobal>
#ifdef FENNIMARK_BUILD
#define FENNIMARK_EXPORT Q_DECL_EXPORT
#else
#define FENNIMARK_EXPORT Q_DECL_IMPORT
#endif
