// SPDX-License-Identifier: MIT
#include "core/render/pictureFile.h"
#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <memory>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"

namespace meridor {
namespace {

constexpr int kPixelsPerInch = 96;

/// A picture in memory, whose writes fail after a cancel, so that an encoder stops in the middle.
class CancellableBuffer : public QBuffer {
protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        return isCancelled() ? -1 : QBuffer::writeData(data, length);
    }
};

/// Replaces characters that XML cannot hold. Names may have them, and one makes the whole picture
/// unreadable.
class XmlBuffer : public CancellableBuffer {
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
        return CancellableBuffer::writeData(text.constData(), length);
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

void writePng(QIODevice &file, const QSize &size, const std::function<void(QPainter &)> &paint)
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
    QImageWriter writer(&file, "png");
    if (!writer.write(image)) {
        stopIfCancelled();
        fail(QStringLiteral("the picture could not be packed: %1").arg(writer.errorString()));
    }
}

void writeSvg(QIODevice &file, const QSize &size, const QString &title,
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
}

void writePdf(QIODevice &file, const QSize &size, const QString &title,
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
    const bool isSvg = suffix == QLatin1String("svg");
    const std::unique_ptr<QBuffer> picture(isSvg ? new XmlBuffer : new CancellableBuffer);
    picture->open(QIODevice::WriteOnly);
    isSvg                            ? writeSvg(*picture, size, title, paint)
    : suffix == QLatin1String("png") ? writePng(*picture, size, paint)
                                     : writePdf(*picture, size, title, paint);
    stopIfCancelled();
    writeOutput(path, [&](QIODevice &file) { writeWhole(file, picture->data(), path); });
}

} // namespace meridor
