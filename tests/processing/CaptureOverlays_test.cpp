#include <gtest/gtest.h>

#include <QFontMetricsF>

#include "processing/CaptureOverlays.h"

namespace marigold {
namespace {

Image plain(int wide, int high, QColor colour) {
    QImage image(wide, high, QImage::Format_ARGB32);
    image.fill(colour);
    return Image::fromQImage(image);
}

TEST(CaptureOverlaysTest, ThePointersHotSpotLandsOnTheRecordedPosition) {
    QImage cursor(16, 16, QImage::Format_ARGB32);
    cursor.fill(Qt::transparent);
    const QPoint hotSpot(3, 5);
    cursor.setPixelColor(hotSpot, Qt::red);
    const Image screen = plain(200, 100, Qt::white);
    const struct {
        QPoint at;
        bool drawn;
    } cases[] = {{{120, 40}, true}, {{0, 0}, true}, {{200, 50}, false}, {{-1, 10}, false}};
    for (const auto& c : cases) {
        const QImage got = overlays::drawCursor(cursor, hotSpot, screen, c.at).toQImage();
        ASSERT_EQ(got.size(), QSize(200, 100));
        if (c.drawn) {
            EXPECT_EQ(got.pixelColor(c.at), QColor(Qt::red)) << c.at.x() << "," << c.at.y();
        } else {
            EXPECT_EQ(got, screen.toQImage()) << "outside: nothing drawn";
        }
    }
}

TEST(CaptureOverlaysTest, TheStampBandIsAFifthTallerThanItsTextWhichEndsTenFromTheRight) {
    const QDateTime when(QDate(2026, 11, 24), QTime(9, 41));
    const Image stamped = overlays::datedImage(plain(400, 300, Qt::blue), false, when);
    const QFontMetricsF metrics(overlays::stampFont());
    const QImage got = stamped.toQImage();
    ASSERT_EQ(got.width(), 400);
    EXPECT_EQ(got.height(), 300 + int(1.2 * metrics.height()));
    EXPECT_EQ(got.pixelColor(5, 150), QColor(Qt::blue)) << "the picture above is untouched";
    int rightmostInk = -1;
    for (int y = 300; y < got.height(); ++y) {
        for (int x = 0; x < got.width(); ++x) {
            if (qGray(got.pixel(x, y)) < 128) rightmostInk = std::max(rightmostInk, x);
        }
    }
    // Glyphs stand a pixel or two inside their advance.
    EXPECT_NEAR(rightmostInk, 400 - 10, 3);
    EXPECT_GT(qGray(got.pixel(2, got.height() - 2)), 200) << "the band is white";
    EXPECT_NE(overlays::stampText(when, true), overlays::stampText(when, false));
}

}  // namespace
}  // namespace marigold
