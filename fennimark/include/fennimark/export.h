// SPDX-License-Identifier: MIT
/// The macro that marks the exported classes of the shared library Fennimark.
#pragma once
#include <QtGlobal>
#ifdef FENNIMARK_BUILD
#define FENNIMARK_EXPORT Q_DECL_EXPORT
#else
#define FENNIMARK_EXPORT Q_DECL_IMPORT
#endif
