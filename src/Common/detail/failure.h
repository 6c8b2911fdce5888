// SPDX-License-Identifier: MIT
/// How the library reports a broken internal condition.
#pragma once
#include <QtGlobal>

namespace datainterface {

/// Throws vorn_error with `text` in double quotes, the file's label and the line. It is out of
/// line, so that a check that passes costs only its test. The label is the file's name up to its
/// first dot ("MVectorDataset" for MVectorDataset.values.cpp), and "..\Common\DataManager" for the
/// block store.
[[noreturn]] void fail(const char *text, const char *file = __builtin_FILE(),
                       int line = __builtin_LINE());

inline void require(bool holds, const char *text, const char *file = __builtin_FILE(),
                    int line = __builtin_LINE())
{
    if (Q_UNLIKELY(!holds))
        fail(text, file, line);
}

} // namespace datainterface
