// SPDX-License-Identifier: MIT
/// The encodings of texts in files. Texts are UTF-8, else in the encoding that the file declares,
/// else Windows-1252, unless the user names another one.
#pragma once
#include <QByteArray>
#include <QString>
#include <string>
#include <string_view>
#include "core/export.h"

class QTextCodec;

namespace meridor {

/// Raised by TextDecoder for bytes that are not in its encoding.
struct WrongEncoding {};

/// Converts texts of one encoding to UTF-8.
class MERIDOR_EXPORT TextDecoder {
public:
    /// @param name  such as "UTF-8", "ISO-8859-1", "1252" or "CP850". Raises a Failure if there is
    ///              no such encoding.
    explicit TextDecoder(const QString &name);

    bool isUtf8() const { return mCodec == nullptr; }
    /// Whether a unit of the encoding has more than one byte also for ASCII.
    bool isWide() const;
    const QString &name() const { return mName; }
    QTextCodec *codec() const { return mCodec; }
    /// Valid until the next call, and as long as `text`. Raises WrongEncoding.
    std::string_view decode(std::string_view text);
    QString decoded(const char *text);

private:
    QString mName;
    QTextCodec *mCodec = nullptr; ///< null for UTF-8
    QByteArray mBuffer;
};

/// Whether a text is valid UTF-8.
MERIDOR_EXPORT bool isUtf8(std::string_view text);
/// Whether an encoding of this name, as a user or a .cpg file writes it, is known.
MERIDOR_EXPORT bool isEncoding(const QString &name);

} // namespace meridor
