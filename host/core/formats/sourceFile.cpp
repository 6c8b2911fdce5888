// SPDX-License-Identifier: MIT
#include "core/formats/sourceFile.h"
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTextCodec>
#include "core/formats/spool.h"
#include "core/formats/textEncoding.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/inputFile.h"
#include "core/project/outputFile.h"

namespace meridor {
namespace {

constexpr qint64 kBlock = 1 << 18;

void append(QTemporaryFile &copy, const QByteArray &bytes)
{
    if (copy.write(bytes) != bytes.size())
        fail(QStringLiteral("%1: no room for a copy of the source: %2")
                 .arg(copy.fileName(), copy.errorString()),
             "scratch");
}

/// Copies a file, each block through `convert`.
template <class Convert>
std::unique_ptr<QTemporaryFile> copyOf(const QString &path, Convert convert)
{
    InputFile file(path);
    if (!file.openForReading())
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    auto copy = makeScratchFile();
    for (;;) {
        stopIfCancelled();
        const QByteArray block = file.read(kBlock);
        if (block.isEmpty())
            break;
        append(*copy, convert(block));
    }
    if (file.error() != QFileDevice::NoError)
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    if (!copy->flush())
        append(*copy, "?"); // reports why nothing can be written
    return copy;
}

/// The encoding that a byte order mark states, UTF-16 or UTF-32; empty without one.
QString markedEncoding(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray start = file.read(4);
    if (start.startsWith(QByteArray("\xFF\xFE\0\0", 4)) || start == QByteArray("\0\0\xFE\xFF", 4))
        return QStringLiteral("UTF-32");
    return start.startsWith("\xFF\xFE") || start.startsWith("\xFE\xFF") ? QStringLiteral("UTF-16")
                                                                        : QString();
}

} // namespace

bool isConnection(const QString &text)
{
    static const QRegularExpression scheme(QStringLiteral("^(?:[A-Za-z][A-Za-z0-9_+]+:|/vsi)"));
    return !QFileInfo::exists(text) && scheme.match(text).hasMatch();
}

QString withoutPassword(const QString &text)
{
    static const QRegularExpression named(
        QStringLiteral("\\b((?:password|pwd|pass)\\s*=\\s*)('(?:[^'\\\\]|\\\\.)*'|[^\\s,;&]*)"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression inUrl(QStringLiteral("(://[^/@:\\s]*):[^/@\\s]*@"));
    if (!isConnection(text))
        return text;
    QString shown = text;
    shown.replace(named, QStringLiteral("\\1***"));
    shown.replace(inUrl, QStringLiteral("\\1:***@"));
    return shown;
}

SourceFile openSource(const QString &path, const QString &encoding)
{
    SourceFile source;
    source.path = path;
    if (isStream(path)) {
        source.copy = copyOf(path, [](const QByteArray &block) { return block; });
        source.path = source.copy->fileName();
    }
    QString wide = markedEncoding(source.path);
    if (wide.isEmpty() && !encoding.isEmpty() && TextDecoder(encoding).isWide())
        wide = encoding;
    if (wide.isEmpty() || !QFileInfo(source.path).isFile())
        return source;
    const std::unique_ptr<QTextDecoder> decoder(TextDecoder(wide).codec()->makeDecoder());
    auto converted = copyOf(source.path, [&](const QByteArray &block) {
        const QString text = decoder->toUnicode(block);
        if (decoder->hasFailure() || text.contains(QChar(0xFFFD)))
            fail(QStringLiteral("%1: not a text in %2").arg(path, wide), "encoding");
        return text.toUtf8();
    });
    if (decoder->needsMoreData())
        fail(QStringLiteral("%1: not a text in %2").arg(path, wide), "encoding");
    source.path = converted->fileName();
    source.copy = std::move(converted);
    source.converted = true;
    return source;
}

} // namespace meridor
