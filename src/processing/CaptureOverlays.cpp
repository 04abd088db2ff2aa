#include "processing/CaptureOverlays.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>

namespace marigold::overlays {

namespace {

constexpr int kStampSize = 12;
constexpr float kStampInset = -10;

}  // namespace

Image drawCursor(const QImage& cursor, QPoint hotSpot, const Image& image, QPoint at) {
    if (image.isNull() || cursor.isNull()) return image;
    QImage pixels = image.toQImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (!pixels.rect().contains(at)) return image;
    QPainter painter(&pixels);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(at - hotSpot, cursor);
    painter.end();
    return Image::fromQImage(pixels);
}

Image imageWithTextBelowImage(const QString& text, const QFont& font, const Image& image,
                              float posX) {
    if (image.isNull()) return image;
    const QImage above = image.toQImage();
    const QFontMetricsF metrics(font);
    const qreal textWidth = metrics.horizontalAdvance(text);
    const qreal textHeight = metrics.height();
    const qreal band = textHeight * 1.2;
    QImage stamped(above.width(), int(above.height() + band),
                   QImage::Format_ARGB32_Premultiplied);
    stamped.fill(Qt::transparent);
    QPainter painter(&stamped);
    painter.drawImage(0, 0, above);
    const QRectF strip(0, above.height(), above.width(), stamped.height() - above.height());
    painter.fillRect(strip, QColor(255, 255, 255, int(0.9 * 255 + 0.5)));
    const qreal x = posX < 0 ? above.width() + posX - textWidth : posX;
    painter.setFont(font);
    painter.setPen(Qt::black);
    const qreal top = above.height() + (band - textHeight) / 2;
    painter.drawText(QPointF(x, top + metrics.ascent()), text);
    painter.end();
    return Image::fromQImage(stamped);
}

QString stampText(const QDateTime& when, bool timed) {
    const QLocale locale;
    return timed ? locale.toString(when, QLocale::ShortFormat)
                 : locale.toString(when.date(), QLocale::ShortFormat);
}

QFont stampFont() {
    QFont font = QGuiApplication::font();
    font.setBold(true);
    // On a bitmap a point is a pixel.
    font.setPixelSize(kStampSize);
    return font;
}

Image datedImage(const Image& image, bool timed, const QDateTime& when) {
    return imageWithTextBelowImage(stampText(when, timed), stampFont(), image, kStampInset);
}

}  // namespace marigold::overlays
