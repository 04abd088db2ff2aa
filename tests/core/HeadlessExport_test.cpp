#include "core/HeadlessExport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "support/TestImages.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

using Sizing = ExportOptions::Sizing;
using vips::VImage;

QStringList split(const char* line) {
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

struct GoodCase {
    const char* arguments;
    ExportOptions expected;
};

ExportOptions options(const char* input, const char* output) {
    ExportOptions o;
    o.input = QString::fromUtf8(input);
    o.output = QString::fromUtf8(output);
    return o;
}

template <typename Change>
ExportOptions with(ExportOptions o, Change change) {
    change(o);
    return o;
}

TEST(HeadlessExportArguments, GoodListsGiveTheirOptions) {
    const GoodCase cases[] = {
        {"--export o.jpg in.png", options("in.png", "o.jpg")},
        {"in.png --export=o.PNG",
         with(options("in.png", "o.PNG"), [](auto& o) { o.format = PngFormat; })},
        {"--export o.tiff --crop 10,20,30,40 --width 300 in",
         with(options("in", "o.tiff"),
              [](auto& o) {
                  o.format = TiffFormat;
                  o.crop = PixelRect{10, 20, 30, 40};
                  o.sizing = Sizing::Width;
                  o.size = 300;
              })},
        {"--export out --height=50 in", with(options("in", "out"),
                                             [](auto& o) {
                                                 o.sizing = Sizing::Height;
                                                 o.size = 50;
                                             })},
        {"--export o.gif --format jpeg --quality 100 --limit 50 in", with(options("in", "o.gif"),
                                                                          [](auto& o) {
                                                                              o.quality = 100;
                                                                              o.limitKB = 50;
                                                                          })},
        {"--export o.jpg --format GIF in",
         with(options("in", "o.jpg"), [](auto& o) { o.format = GifFormat; })},
        {"--export o.jpg --scale 0.25 --sharpen 0.6 --border 3 --border-color #FF8000 "
         "--preserve-exif 0 --verbose in",
         with(options("in", "o.jpg"),
              [](auto& o) {
                  o.size = 0.25;
                  o.sharpness = 0.6f;
                  o.borderThickness = 3;
                  o.borderColor = QColor(255, 128, 0);
                  o.preserveExif = 0;
                  o.verbose = true;
              })},
        {"--export o.jpg -- -in.png", options("-in.png", "o.jpg")},
        {"--export o.jpg --ratio 1.5:1 --width 300 in", with(options("in", "o.jpg"),
                                                             [](auto& o) {
                                                                 o.ratio = std::pair{1.5, 1.0};
                                                                 o.sizing = Sizing::Width;
                                                                 o.size = 300;
                                                             })},
        {"--export o.jpg --size 640X480 in",
         with(options("in", "o.jpg"), [](auto& o) { o.exactSize = QSize(640, 480); })},
    };
    for (const GoodCase& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ParsedExport parsed = parseExportArguments(split(c.arguments));
        ASSERT_TRUE(parsed.options) << parsed.error.toStdString();
        const ExportOptions& got = *parsed.options;
        const ExportOptions& want = c.expected;
        EXPECT_EQ(got.input, want.input);
        EXPECT_EQ(got.output, want.output);
        EXPECT_EQ(got.crop, want.crop);
        EXPECT_EQ(got.ratio, want.ratio);
        EXPECT_EQ(got.exactSize, want.exactSize);
        EXPECT_EQ(got.sizing, want.sizing);
        EXPECT_DOUBLE_EQ(got.size, want.size);
        EXPECT_FLOAT_EQ(got.sharpness, want.sharpness);
        EXPECT_EQ(got.borderThickness, want.borderThickness);
        EXPECT_EQ(got.borderColor, want.borderColor);
        EXPECT_EQ(got.format, want.format);
        EXPECT_EQ(got.quality, want.quality);
        EXPECT_EQ(got.limitKB, want.limitKB);
        EXPECT_EQ(got.preserveExif, want.preserveExif);
        EXPECT_EQ(got.verbose, want.verbose);
        EXPECT_FALSE(got.help);
    }
}

TEST(HeadlessExportArguments, HelpWinsOverEverythingElse) {
    for (const char* line : {"--export --help", "--help", "-h --scale abc", "in --export -h"}) {
        const ParsedExport parsed = parseExportArguments(split(line));
        ASSERT_TRUE(parsed.options) << line;
        EXPECT_TRUE(parsed.options->help) << line;
    }
    EXPECT_TRUE(exportHelpText().contains(QLatin1String("--export OUT")));
}

struct BadCase {
    const char* arguments;
    const char* reason;  // part of the message
};

TEST(HeadlessExportArguments, NonsenseIsRefusedWithOneLine) {
    const BadCase cases[] = {
        {"--export o.jpg --scale abc in", "--scale must be a number above 0, not \"abc\""},
        {"--export o.jpg --scale -2 in", "--scale"},
        {"--export o.jpg --scale nan in", "--scale"},
        {"--export o.jpg --crop 1,2,3 in", "--crop must be X,Y,W,H"},
        {"--export o.jpg --crop 1,2,3,0 in", "--crop"},
        {"--export o.jpg --crop 1.5,0,5,5 in", "--crop"},
        {"--export o.jpg --quality 0 in", "--quality must be a whole number from 1 to 100"},
        {"--export o.jpg --format bmp in", "--format must be jpg, png, tif or gif, not \"bmp\""},
        {"--export o.jpg --scale 2 --width 10 in", "only one of --scale, --width and --height"},
        {"--export o.jpg --height 12px in", "--height"},
        {"--export o.jpg", "no input file"},
        {"--export o.jpg a.png b.png", "one input file only"},
        {"in.png", "--export OUT"},
        {"--export --quality 90 in.png", "--export needs a value"},
        {"--export= in.png", "--export OUT"},
        {"--export o.jpg --limit 9991 in", "--limit must be a whole number of KB from 10 to 9990"},
        {"--export o.png --limit 50 in", "--limit applies to JPEG output only"},
        {"--export o.jpg --preserve-exif 3 in", "--preserve-exif must be 0, 1 or 2"},
        {"--export o.jpg --border -1 in", "--border"},
        {"--export o.jpg --border 2 --border-color red in", "--border-color must be #RRGGBB"},
        {"--export o.jpg --sharpen 3 in", "--sharpen must be a number from 0 to 2"},
        {"--export o.jpg -x in", "unknown option -x"},
        {"--export o.jpg --quality 90 --quality=95 in", "--quality is given more than once"},
        {"--export o.jpg --ratio 4:0 in", "--ratio must be W:H with both terms above 0"},
        {"--export o.jpg --ratio 4x3 in", "--ratio"},
        {"--export o.jpg --size 640x9 in", "--size must be WxH in whole pixels"},
        {"--export o.jpg --size 640:480 in", "--size"},
        {"--export o.jpg --crop 0,0,9,9 --ratio 1:1 in", "only one of --crop, --ratio and --size"},
        {"--export o.jpg --size 64x48 --width 10 in", "--size is the output size"},
    };
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ParsedExport parsed = parseExportArguments(split(c.arguments));
        EXPECT_FALSE(parsed.options);
        EXPECT_TRUE(parsed.error.contains(QString::fromUtf8(c.reason)))
            << parsed.error.toStdString();
        EXPECT_FALSE(parsed.error.contains(QLatin1Char('\n')));
    }
}

TEST(HeadlessExportArguments, UnusableTurnsAreRefusedWithStatusTwo) {
    for (const char* value : {"abc", "nan", "", "inf", "181", "-180.5", "90deg"}) {
        SCOPED_TRACE(value);
        const QStringList arguments = {"--export", "o.png", "--rotate=" + QString::fromUtf8(value),
                                       "in.png"};
        const ParsedExport parsed = parseExportArguments(arguments);
        EXPECT_FALSE(parsed.options);
        EXPECT_TRUE(
            parsed.error.startsWith("--rotate must be a number of degrees from -180 to 180"))
            << parsed.error.toStdString();
        EXPECT_EQ(runExportCommand(arguments, "marigold"), 2);
    }
    const ParsedExport edge = parseExportArguments(split("--export o.png --rotate -180 in.png"));
    ASSERT_TRUE(edge.options) << edge.error.toStdString();
    EXPECT_EQ(edge.options->rotation, -180);
}

TEST(HeadlessExportArguments, OnlyAnExportOptionBeforeTheEndOfOptionsMeansHeadless) {
    const std::pair<const char*, bool> cases[] = {
        {"--export o.jpg in", true}, {"in --export=o.jpg", true}, {"photo.jpg", false},
        {"--exported", false},       {"-- --export", false},      {"", false},
    };
    for (const auto& [line, headless] : cases)
        EXPECT_EQ(isExportCommand(split(line)), headless) << line;
}

TEST(HeadlessExportCrop, TopLeftRegionsBecomeLowerLeftRectanglesClippedToTheImage) {
    struct Case {
        PixelRect crop;
        std::optional<RectF> rect;
    };
    const Case cases[] = {
        {{0, 0, 300, 200}, RectF{0, 0, 300, 200}},
        {{20, 0, 50, 30}, RectF{20, 170, 50, 30}},      // the top rows are the highest y
        {{0, 170, 50, 30}, RectF{0, 0, 50, 30}},        // the bottom rows start at y 0
        {{250, 150, 100, 100}, RectF{250, 0, 50, 50}},  // past the right and bottom edges
        {{0, 0, 1000, 1000}, RectF{0, 0, 300, 200}},
        {{300, 0, 10, 10}, std::nullopt},
        {{0, 200, 10, 10}, std::nullopt},
        {{2147483000, 0, 2000, 10}, std::nullopt},  // the far edge would overflow an int
    };
    for (const Case& c : cases) {
        const std::optional<RectF> rect = pipelineRect(c.crop, 300, 200);
        EXPECT_EQ(rect, c.rect) << c.crop.x << "," << c.crop.y << "," << c.crop.width << ","
                                << c.crop.height;
    }
}

class HeadlessExportFiles : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(_dir.isValid()); }

    QString path(const char* name) const { return _dir.filePath(QString::fromUtf8(name)); }

    // Saved with libvips directly, so the source the comparison reads owes nothing to us.
    QString savePng(const Image& image, const char* name) const {
        const QString file = path(name);
        image.pixels()
            .extract_band(0, VImage::option()->set("n", 3))
            .pngsave(file.toLocal8Bit().constData());
        return file;
    }

    ExportResult run(const QString& arguments) const {
        const ParsedExport parsed = parseExportArguments(arguments.split(QLatin1Char(' ')));
        EXPECT_TRUE(parsed.options) << parsed.error.toStdString();
        return parsed.options ? runExport(*parsed.options) : ExportResult{parsed.error, {}, 0, 0};
    }

    // From the bytes: libvips would serve a rewritten file's old pixels from its cache.
    static VImage read(const QString& file) { return test::vipsDecode(test::readFile(file)); }

    QTemporaryDir _dir;
};

TEST_F(HeadlessExportFiles, ACropKeepsExactlyTheSourcePixelsCountedFromTheTop) {
    // Every pixel's red and green say where it came from, so any shift or flip shows.
    const QString in = savePng(test::gradientImage(240, 180), "gradient.png");
    const QString out = path("crop.png");
    const PixelRect crops[] = {
        {37, 23, 101, 67}, {0, 0, 240, 12}, {0, 168, 240, 12}, {200, 150, 100, 100}};
    for (const PixelRect& c : crops) {
        SCOPED_TRACE(testing::Message() << c.x << "," << c.y << "," << c.width << "," << c.height);
        const ExportResult result = run(QStringLiteral("--export %1 --crop %2,%3,%4,%5 %6")
                                            .arg(out)
                                            .arg(c.x)
                                            .arg(c.y)
                                            .arg(c.width)
                                            .arg(c.height)
                                            .arg(in));
        ASSERT_TRUE(result.error.isEmpty()) << result.error.toStdString();
        const int wide = std::min(c.width, 240 - c.x), high = std::min(c.height, 180 - c.y);
        const VImage expected = read(in).extract_area(c.x, c.y, wide, high);
        const VImage got = read(out);
        ASSERT_EQ(got.width(), wide);
        ASSERT_EQ(got.height(), high);
        EXPECT_EQ(test::difference(got, expected).max(), 0);
    }
}

TEST_F(HeadlessExportFiles, SizeOptionsScaleTheCropNotTheImage) {
    const QString in = savePng(test::gradientImage(240, 180), "gradient.png");
    const QString out = path("sized.png");
    struct Case {
        const char* options;
        int wide, high;
    };
    const Case cases[] = {
        {"", 240, 180},
        {"--crop 0,0,120,60 --width 60", 60, 30},
        {"--crop 0,0,120,60 --height 90", 180, 90},
        {"--crop 10,10,100,50 --scale 0.5", 50, 25},
        {"--crop 230,0,100,20 --width 20", 20, 40},  // clipped to 10 wide before scaling
        {"--crop 0,0,100,50 --scale 0.01", 20, 10},  // no side under 10 pixels
        {"--ratio 1:1", 180, 180},
        {"--ratio 4:1 --scale 0.5", 120, 30},
        {"--size 641x479", 641, 479},  // an enlargement of an odd ratio, exact all the same
        {"--size 10x100", 10, 100},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        QString arguments =
            QStringLiteral("--export %1 %2 %3").arg(out, QString::fromUtf8(c.options), in);
        const ExportResult result = run(arguments.simplified());
        ASSERT_TRUE(result.error.isEmpty()) << result.error.toStdString();
        const VImage got = read(out);
        EXPECT_EQ(got.width(), c.wide);
        EXPECT_EQ(got.height(), c.high);
    }
    // A ratio's region is centred: these are the middle 180 columns, unscaled.
    ASSERT_TRUE(run(QStringLiteral("--export %1 --ratio 1:1 %2").arg(out, in)).error.isEmpty());
    EXPECT_EQ(test::difference(read(out), read(in).extract_area(30, 0, 180, 180)).max(), 0);
}

TEST_F(HeadlessExportFiles, FlipsGreyAndTurnsMatchImageMagickAndComeBeforeTheCrop) {
    const QString in = savePng(test::gradientImage(100, 50), "gradient.png");
    const QString out = path("changed.png"), reference = path("reference.png");
    struct Case {
        const char* options;
        const char* convert;  // the same change by ImageMagick, which turns clockwise
        int tolerance;
        int wide, high;
    };
    const Case cases[] = {
        {"--rotate 90", "-rotate -90", 0, 50, 100},
        {"--rotate -90", "-rotate 90", 0, 50, 100},
        {"--rotate 180", "-rotate 180", 0, 100, 50},
        {"--flip-horizontal", "-flop", 0, 100, 50},
        {"--flip-vertical", "-flip", 0, 100, 50},
        {"--rotate 90 --flip-horizontal", "-flop -rotate -90", 0, 50, 100},
        {"--rotate 90 --crop 5,20,40,30", "-rotate -90 -crop 40x30+5+20 +repage", 0, 40, 30},
        // Rounding of the halves may differ.
        {"--desaturate", "-fx 0.222*r+0.707*g+0.071*b", 1, 100, 50},
        // Grey before the turn, so the uncovered corners stay transparent.
        {"--rotate 30 --desaturate", nullptr, 0, 111, 93},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        const ExportResult result =
            run(QStringLiteral("--export %1 %2 %3").arg(out, QString::fromUtf8(c.options), in));
        ASSERT_TRUE(result.error.isEmpty()) << result.error.toStdString();
        const VImage got = read(out);
        ASSERT_EQ(got.width(), c.wide);
        ASSERT_EQ(got.height(), c.high);
        if (!c.convert) {
            ASSERT_EQ(got.bands(), 4);
            EXPECT_EQ(got.getpoint(0, 0)[3], 0);
            continue;
        }
        test::runTool("convert", QStringList{in} + QString::fromUtf8(c.convert).split(' ') +
                                     QStringList{"-depth", "8", reference});
        EXPECT_LE(test::difference(got, read(reference)).max(), c.tolerance);
    }
}

TEST_F(HeadlessExportFiles, TheBorderIsDrawnInsideTheOutputInItsColour) {
    const QString in = savePng(test::gradientImage(100, 80), "gradient.png");
    const QString out = path("framed.png");
    const ExportResult result =
        run(QStringLiteral("--export %1 --border 4 --border-color #FF8000 %2").arg(out, in));
    ASSERT_TRUE(result.error.isEmpty()) << result.error.toStdString();
    const VImage got = read(out);
    ASSERT_EQ(got.width(), 100);
    ASSERT_EQ(got.height(), 80);
    for (const auto& [x, y] : {std::pair{0, 0}, {3, 40}, {99, 79}, {50, 76}})
        EXPECT_EQ(got.getpoint(x, y), (std::vector<double>{255, 128, 0})) << x << "," << y;
    EXPECT_EQ(got.getpoint(4, 4), read(in).getpoint(4, 4));
}

TEST_F(HeadlessExportFiles, FailuresSayWhyAndLeaveTheOutputAlone) {
    // Noise that no JPEG quality squeezes under 10 KB at this size.
    const QString in = savePng(test::photoLikeImage(1200, 900), "photo.png");
    const QString out = path("kept.jpg");
    const QByteArray before("an earlier export");
    test::writeFile(out, before);
    struct Case {
        QString arguments;
        const char* reason;
    };
    const Case cases[] = {
        {QStringLiteral("--export %1 --quality 100 --limit 10 %2").arg(out, in),
         "File Size Limit Too Low"},
        {QStringLiteral("--export %1 %2").arg(out, path("missing.png")),
         "missing.png: no such file"},
        {QStringLiteral("--export %1 %2").arg(out, path("")), "cannot read"},
        {QStringLiteral("--export %1 --crop 1200,0,10,10 %2").arg(out, in),
         "lies outside the 1200 x 900 image"},
        {QStringLiteral("--export %1 --scale 20 %2").arg(out, in), "too large"},
        {QStringLiteral("--export %1 --rotate 45 %2")
             .arg(out, savePng(test::gradientImage(30000, 10), "thin.png")),
         "turned by 45 degrees, the picture would be too large (21220 x 21220 pixels)"},
        {QStringLiteral("--export %1 %2").arg(path("no/such/folder/x.jpg"), in), "no such folder"},
        {QStringLiteral("--export %1 %2").arg(path(""), in), "is a folder"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.toStdString());
        const ExportResult result = run(c.arguments);
        EXPECT_TRUE(result.error.contains(QString::fromUtf8(c.reason)))
            << result.error.toStdString();
        EXPECT_FALSE(result.error.contains(QLatin1Char('\n')));
        EXPECT_EQ(test::readFile(out), before);
    }
    EXPECT_FALSE(QFileInfo::exists(path("no/such/folder/x.jpg")));
}

}  // namespace
}  // namespace marigold
