// SPDX-License-Identifier: MIT
#include "core/render/pictureFile.h"
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <memory>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"

namespace meridor {
namespace {

constexpr int kPixelsPerInch = 96;

/// A file whose writes fail after a cancel, so that an encoder stops in the middle.
class CancellableFile : public QFile {
public:
    explicit CancellableFile(const QString &name) : QFile(name) {}
    bool wasWritten() { return flush() && error() == NoError; }

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        return isCancelled() ? -1 : QFile::writeData(data, length);
    }
};

/// Replaces characters that XML cannot hold. Names may have them, and one makes the whole picture
/// unreadable.
class XmlFile : public CancellableFile {
public:
    using CancellableFile::CancellableFile;

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        QByteArray text(data, static_cast<int>(length));
        for (char &byte : text) {
            const auto code = static_cast<unsigned char>(byte);
            if (code < 0x20 && byte != '\t' && byte != '\n' && byte != '\r')
                byte = ' ';
            if (mBefore == 0xEFBF && code >= 0xBE) // U+FFFE, U+FFFF become U+FFFD
                byte = static_cast<char>(0xBD);
            mBefore = static_cast<quint16>(mBefore << 8 | code);
        }
        return CancellableFile::writeData(text.constData(), length);
    }

private:
    quint16 mBefore = 0; ///< the last two bytes
};

void paintOn(QPaintDevice &device, const std::function<void(QPainter &)> &paint)
{
    QPainter painter;
    if (!painter.begin(&device))
        fail(QStringLiteral("there is not enough memory for the picture"));
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    paint(painter);
    painter.end();
    stopIfCancelled();
}

bool writePng(QFile &file, const QSize &size, const std::function<void(QPainter &)> &paint)
{
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        fail(QStringLiteral("there is not enough memory for a picture of %1 by %2 pixels")
                 .arg(size.width())
                 .arg(size.height()));
    image.setDotsPerMeterX(qRound(kPixelsPerInch / 0.0254));
    image.setDotsPerMeterY(qRound(kPixelsPerInch / 0.0254));
    image.fill(Qt::white);
    paintOn(image, paint);
    return QImageWriter(&file, "png").write(image);
}

bool writeSvg(QFile &file, const QSize &size, const QString &title,
              const std::function<void(QPainter &)> &paint)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&file);
    svg.setResolution(kPixelsPerInch);
    svg.setSize(size);
    svg.setViewBox(QRect(QPoint(0, 0), size));
    svg.setTitle(title.toHtmlEscaped()); // the generator writes it as it is
    paintOn(svg, [&](QPainter &painter) {
        painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
        paint(painter);
    });
    return true;
}

bool writePdf(QFile &file, const QSize &size, const QString &title,
              const std::function<void(QPainter &)> &paint)
{
    QPdfWriter pdf(&file);
    pdf.setResolution(kPixelsPerInch);
    pdf.setPageSize(QPageSize(QSizeF(size) / kPixelsPerInch, QPageSize::Inch, QString(),
                              QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    pdf.setTitle(title);
    pdf.setCreator(QString());
    paintOn(pdf, paint);
    return true;
}

} // namespace

void requirePictureName(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != QLatin1String("png") && suffix != QLatin1String("svg")
        && suffix != QLatin1String("pdf"))
        failUsage(QStringLiteral("%1: the name of a picture ends in .png, .svg or .pdf").arg(path));
}

void savePicture(const QString &path, const QSize &size, const QString &title,
                 const std::function<void(QPainter &)> &paint)
{
    requirePictureName(path);
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool written = replaceFile(path, [&](const QString &beside) {
        const bool isSvg = suffix == QLatin1String("svg");
        const std::unique_ptr<CancellableFile> held(isSvg ? new XmlFile(beside)
                                                          : new CancellableFile(beside));
        CancellableFile &file = *held;
        if (!file.open(QIODevice::WriteOnly))
            return false;
        const bool complete = isSvg                            ? writeSvg(file, size, title, paint)
                              : suffix == QLatin1String("png") ? writePng(file, size, paint)
                                                               : writePdf(file, size, title, paint);
        stopIfCancelled();
        return complete && file.wasWritten();
    });
    if (!written)
        fail(QStringLiteral("%1: could not be written").arg(path));
}

} // namespace meridor
