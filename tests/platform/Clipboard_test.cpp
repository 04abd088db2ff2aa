#include "platform/Clipboard.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QClipboard>
#include <QColorSpace>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>
#include <cstdlib>
#include <functional>

#include "support/TestImages.h"

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
        const QByteArray bytes = data->data(format);
        const vips::VImage decoded = vips::VImage::new_from_buffer(bytes.constData(), bytes.size(), "");
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
    // The fixtures do declare 300 dpi, or the test would prove nothing.
    for (const QByteArray& bytes : {png, tiff}) {
        const vips::VImage header =
            vips::VImage::new_from_buffer(bytes.constData(), bytes.size(), "");
        ASSERT_NEAR(header.xres(), 11.811, 0.01);
    }
    struct Case {
        const char* name;
        std::function<QMimeData*()> make;
    } cases[] = {
        {"qt image",
         [&] {
             auto* d = new QMimeData;
             d->setImageData(source);
             return d;
         }},
        {"png bytes",
         [&] {
             auto* d = new QMimeData;
             d->setData("image/png", png);
             return d;
         }},
        {"tiff bytes",
         [&] {
             auto* d = new QMimeData;
             d->setData("image/tiff", tiff);
             return d;
         }},
    };
    for (const Case& c : cases) {
        put(c.make());
        const std::optional<Image> pasted = imageFromClipboard();
        ASSERT_TRUE(pasted) << c.name;
        EXPECT_EQ(pasted->size(), (SizeF{37, 21})) << c.name;
        expectSamePixels(*pasted, source);
    }
}

TEST_F(ClipboardTest, NoImageMeansNothing) {
    QByteArray png = encoded(sourceImage(QImage::Format_RGB32, false), "PNG");
    struct Case {
        const char* name;
        std::function<void(QMimeData*)> fill;
    } cases[] = {
        {"empty", [](QMimeData*) {}},
        {"text only", [](QMimeData* d) { d->setText("just words"); }},
        {"file list only", [](QMimeData* d) { d->setUrls({QUrl::fromLocalFile("/etc/hosts")}); }},
        {"garbage png", [](QMimeData* d) { d->setData("image/png", "not a png"); }},
        {"truncated png", [&](QMimeData* d) { d->setData("image/png", png.left(png.size() / 2)); }},
        {"empty tiff", [](QMimeData* d) { d->setData("image/tiff", {}); }},
    };
    for (const Case& c : cases) {
        auto* data = new QMimeData;
        c.fill(data);
        put(data);
        EXPECT_FALSE(imageFromClipboard()) << c.name;
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
