// SPDX-License-Identifier: MIT
#include "core/formats/textEncoding.h"
#include <QRegularExpression>
#include <QTextCodec>
#include <algorithm>
#include "core/project/failure.h"

namespace meridor {
namespace {

/// The codec of a name. Besides the registered names, files declare bare numbers of code pages.
QTextCodec *codecOf(const QString &name)
{
    static const QRegularExpression page(
        QStringLiteral("^\\s*(?:ANSI|OEM|CP|WINDOWS)?[ _-]*(\\d{3,5})\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression iso(
        QStringLiteral("^\\s*(?:ISO)?[ _-]*8859[ _-]*(\\d{1,2})\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    QString known = name.trimmed();
    if (const auto match = iso.match(known); match.hasMatch()) {
        // Bytes 128 to 159 of files that are declared as ISO 8859-1 are those of Windows-1252.
        known = match.captured(1) == QLatin1String("1")
                    ? QStringLiteral("windows-1252")
                    : QStringLiteral("ISO-8859-%1").arg(match.captured(1));
    } else if (const auto numbered = page.match(known); numbered.hasMatch()) {
        const int number = numbered.captured(1).toInt();
        if (number == 65001)
            known = QStringLiteral("UTF-8");
        else
            known = (number >= 1250 && number <= 1258 ? QStringLiteral("windows-%1")
                                                      : QStringLiteral("CP%1"))
                        .arg(number);
    }
    QTextCodec *const codec = QTextCodec::codecForName(known.toLatin1());
    return codec || !known.startsWith(QLatin1String("CP"))
               ? codec
               : QTextCodec::codecForName("ibm-" + known.mid(2).toLatin1());
}

constexpr int kUtf8Mib = 106; // of IANA's list of character sets

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

// Surrogates and forms that are longer than needed are no valid UTF-8.
bool isUtf8(std::string_view text)
{
    for (size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const size_t length = lead < 0x80                   ? 1
                              : lead >= 0xC2 && lead < 0xE0 ? 2
                              : lead >= 0xE0 && lead < 0xF0 ? 3
                              : lead >= 0xF0 && lead < 0xF5 ? 4
                                                            : 0;
        if (length == 0 || i + length > text.size())
            return false;
        for (size_t k = 1; k < length; ++k)
            if (!isContinuation(text[i + k]))
                return false;
        const auto next = length > 1 ? static_cast<unsigned char>(text[i + 1]) : 0;
        if ((lead == 0xE0 && next < 0xA0) || (lead == 0xED && next >= 0xA0)
            || (lead == 0xF0 && next < 0x90) || (lead == 0xF4 && next >= 0x90))
            return false;
        i += length;
    }
    return true;
}

bool isEncoding(const QString &name)
{
    return codecOf(name) != nullptr;
}

TextDecoder::TextDecoder(const QString &name) : mName(name), mCodec(codecOf(name))
{
    if (!mCodec)
        failUsage(QStringLiteral("unknown encoding %1").arg(name), "encoding");
    if (mCodec->mibEnum() == kUtf8Mib)
        mCodec = nullptr;
}

bool TextDecoder::isWide() const
{
    return mCodec && mCodec->name().startsWith("UTF-");
}

std::string_view TextDecoder::decode(std::string_view text)
{
    const bool plain =
        std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
    if (plain)
        return text;
    if (isUtf8()) {
        if (!meridor::isUtf8(text))
            throw WrongEncoding();
        return text;
    }
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString wide = mCodec->toUnicode(text.data(), static_cast<int>(text.size()), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0 || wide.contains(QChar(0xFFFD)))
        throw WrongEncoding();
    mBuffer = wide.toUtf8();
    return {mBuffer.constData(), static_cast<size_t>(mBuffer.size())};
}

QString TextDecoder::decoded(const char *text)
{
    const std::string_view utf8 = decode(text);
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

} // namespace meridor
