#include "platform/Clipboard.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QClipboard>
#include <QColorSpace>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>
#include <cstdlib>

#include "support/TestImages.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

constexpr int kDotsPerMeterAt300Dpi = 11811;

class ClipboardTest : public ::testing::Test {
protected:
    void SetUp() override { QGuiApplication::clipboard()->clear(); }
    void TearDown() override { QGuiApplication::clipboard()->clear(); }

    static void put(QMimeData* data) { QGuiApplication::clipboard()->setMimeData(data); }
    static const QMimeData* held() { return QGuiApplication::clipboard()->mimeData(); }
};

// A picture whose every pixel differs from its neighbours, with one half-transparent pixel
// when `withAlpha`; 300 dpi, odd width so that padded rows would show.
QImage sourceImage(QImage::Format format, bool withAlpha) {
    QImage image(37, 21, format);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 6, y * 12, 90));
    }
    if (withAlpha) image.setPixelColor(5, 7, QColor(200, 100, 50, 128));
    image.setDotsPerMeterX(kDotsPerMeterAt300Dpi);
    image.setDotsPerMeterY(kDotsPerMeterAt300Dpi);
    return image;
}

QByteArray encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

// 300-dpi TIFF from libvips, a format Qt may have no plugin for.
QByteArray tiffAt300Dpi(const Image& image) {
    void* buffer = nullptr;
    size_t length = 0;
    image.pixels().write_to_buffer(
        ".tif", &buffer, &length, vips::VImage::option()->set("xres", 11.811)->set("yres", 11.811));
    QByteArray bytes(static_cast<const char*>(buffer), qsizetype(length));
    g_free(buffer);
    return bytes;
}

void expectSamePixels(const Image& image, const QImage& reference) {
    const QImage got = image.toQImage();
    ASSERT_EQ(got.size(), reference.size());
    for (int y = 0; y < reference.height(); ++y) {
        for (int x = 0; x < reference.width(); ++x) {
            const QColor want = reference.pixelColor(x, y), have = got.pixelColor(x, y);
            // Premultiplied storage loses a little colour precision at alpha 128.
            const int slack = want.alpha() == 255 ? 0 : 2;
            ASSERT_NEAR(have.red(), want.red(), slack) << x << "," << y;
            ASSERT_NEAR(have.green(), want.green(), slack) << x << "," << y;
            ASSERT_NEAR(have.blue(), want.blue(), slack) << x << "," << y;
            ASSERT_EQ(have.alpha(), want.alpha()) << x << "," << y;
        }
    }
}

TEST_F(ClipboardTest, OutputCarriesPixelsAndTheFileForFileManagers) {
    const Image output = test::gradientImage(40, 30);
    const QString file = QStringLiteral("/tmp/out dir/ünï photo.jpg");
    putOutputOnClipboard(output, file);
    const QMimeData* data = held();
    ASSERT_NE(data, nullptr);

    for (const char* format :
         {"image/png", "image/tiff", "text/uri-list", "x-special/gnome-copied-files", "text/plain"}) {
        EXPECT_TRUE(data->hasFormat(format)) << format;
    }
    EXPECT_TRUE(data->hasImage());
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(file)});
    EXPECT_EQ(data->data("x-special/gnome-copied-files"),
              "copy\nfile:///tmp/out%20dir/%C3%BCn%C3%AF%20photo.jpg");
    EXPECT_EQ(data->text(), file);

    // The PNG and TIFF bytes are real files of the output, decoded here by libvips.
    for (const char* format : {"image/png", "image/tiff"}) {
        const vips::VImage decoded = test::vipsDecode(data->data(format));
        EXPECT_EQ(decoded.bands(), 3) << format << ": opaque output needs no alpha";
        EXPECT_EQ(test::difference(decoded, output.pixels().extract_band(
                                                0, vips::VImage::option()->set("n", 3)))
                      .max(),
                  0)
            << format;
    }
    EXPECT_TRUE(data->data("image/png").startsWith("\x89PNG"));
    EXPECT_TRUE(data->data("image/tiff").startsWith("II*"));

    const std::optional<Image> pasted = imageFromClipboard();
    ASSERT_TRUE(pasted);
    expectSamePixels(*pasted, output.toQImage());
    EXPECT_TRUE(pasted->isOpaque());
}

TEST_F(ClipboardTest, OutputWithoutFileCarriesOnlyTheImage) {
    putOutputOnClipboard(test::gradientImage(8, 8), {});
    for (const char* format : {"text/uri-list", "x-special/gnome-copied-files", "text/plain"}) {
        EXPECT_FALSE(held()->hasFormat(format)) << format;
    }
    EXPECT_TRUE(held()->hasFormat("image/png"));
}

// Whatever resolution the pasted data declares, one point is one pixel.
TEST_F(ClipboardTest, PastedImageHasOnePointPerPixel) {
    const QImage source = sourceImage(QImage::Format_RGB32, false);
    const QByteArray png = encoded(source, "PNG");
    const QByteArray tiff = tiffAt300Dpi(Image::fromQImage(source));
    struct Case {
        const char* format;  // none: Qt's own image data
        QByteArray bytes;
    } cases[] = {{nullptr, {}}, {"image/png", png}, {"image/tiff", tiff}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format ? c.format : "qt image");
        auto* data = new QMimeData;
        if (c.format) {
            // The fixture does declare 300 dpi, or the case would prove nothing.
            ASSERT_NEAR(test::vipsDecode(c.bytes).xres(), 11.811, 0.01);
            data->setData(c.format, c.bytes);
        } else {
            data->setImageData(source);
        }
        put(data);
        const std::optional<Image> pasted = imageFromClipboard();
        ASSERT_TRUE(pasted);
        EXPECT_EQ(pasted->size(), (SizeF{37, 21}));
        expectSamePixels(*pasted, source);
    }
}

TEST_F(ClipboardTest, NoImageMeansNothing) {
    const QByteArray png = encoded(sourceImage(QImage::Format_RGB32, false), "PNG");
    const std::pair<const char*, QByteArray> cases[] = {
        {"text/plain", "just words"}, {"text/uri-list", "file:///etc/hosts\r\n"},
        {"image/png", "not a png"},   {"image/png", png.left(png.size() / 2)},
        {"image/tiff", {}},           {nullptr, {}}};
    for (const auto& [format, bytes] : cases) {
        auto* data = new QMimeData;
        if (format) data->setData(format, bytes);
        put(data);
        EXPECT_FALSE(imageFromClipboard()) << (format ? format : "empty") << " " << bytes.size();
    }
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(imageFromClipboard()) << "cleared";
    EXPECT_FALSE(imageFromMimeData(nullptr));
}

TEST_F(ClipboardTest, QImagesOfEveryLayoutConvertToTheSamePixels) {
    struct Case {
        QImage::Format format;
        bool withAlpha, opaque;
    } cases[] = {
        {QImage::Format_RGB32, false, true},    {QImage::Format_RGB888, false, true},
        {QImage::Format_ARGB32, false, true},  // alpha channel, but 255 everywhere
        {QImage::Format_ARGB32, true, false},   {QImage::Format_ARGB32_Premultiplied, true, false},
        {QImage::Format_RGBA8888, true, false},
    };
    for (const Case& c : cases) {
        const QImage source = sourceImage(c.format, c.withAlpha);
        const Image image = Image::fromQImage(source);
        SCOPED_TRACE(int(c.format));
        EXPECT_EQ(image.isOpaque(), c.opaque);
        expectSamePixels(image, source);
    }
    // Grey and indexed layouts pad their rows; a wrong stride would shear the picture.
    const QImage grey =
        sourceImage(QImage::Format_RGB32, false).convertToFormat(QImage::Format_Grayscale8);
    expectSamePixels(Image::fromQImage(grey), grey);
    const QImage indexed =
        sourceImage(QImage::Format_RGB32, false).convertToFormat(QImage::Format_Indexed8);
    expectSamePixels(Image::fromQImage(indexed), indexed);
    EXPECT_TRUE(Image::fromQImage(QImage()).isNull());
}

TEST_F(ClipboardTest, WideGamutQImageIsConvertedToSrgb) {
    QImage wide(2, 1, QImage::Format_RGB32);
    wide.fill(QColor(40, 180, 90));
    wide.setColorSpace(QColorSpace::ProPhotoRgb);
    const test::Rgba got = test::pixelAt(Image::fromQImage(wide), 1, 0);
    const QColor want = QColorSpace(QColorSpace::ProPhotoRgb)
                            .transformationToColorSpace(QColorSpace::SRgb)
                            .map(QColor(40, 180, 90));
    EXPECT_GT(std::abs(got.r - 40) + std::abs(got.g - 180) + std::abs(got.b - 90), 30);
    EXPECT_NEAR(got.r, want.red(), 2);
    EXPECT_NEAR(got.g, want.green(), 2);
    EXPECT_NEAR(got.b, want.blue(), 2);
}

}  // namespace
}  // namespace marigold
