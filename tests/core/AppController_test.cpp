#include "core/AppController.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include "output/OutputImageView.h"
#include "platform/DefaultsKeys.h"
#include "selection/InputImageView.h"
#include "support/BadFiles.h"
#include "support/ControllerFixture.h"
#include "support/TestImages.h"

namespace marigold {
namespace {

using namespace keys;

// A typed number in one of the two text-checked fields.
struct TextCase {
    bool quality;  // the quality field, else the limit field
    const char* typed;
    int storedAtOnce;  // -1: nothing stored in the first pass
    int storedAfterPass;
    int undoSteps;
};

void PrintTo(const TextCase& c, std::ostream* os) {
    *os << (c.quality ? "quality " : "limit ") << '"' << c.typed << '"';
}

class TypedNumber : public AppControllerTest, public ::testing::WithParamInterface<TextCase> {};

TEST_P(TypedNumber, IsCanonicalisedAndClamped) {
    const TextCase c = GetParam();
    const QString key = c.quality ? QString(DefJpegQuality) : QString(DefFilesizeLimit);
    const int before = c.quality ? 50 : 500;
    defaults.setInteger(key, before);
    const QString typed = QString::fromUtf8(c.typed);
    c.quality ? controller.setQuality(typed) : controller.setFilesizeLimit(typed);
    EXPECT_EQ(defaults.integerForKey(key), c.storedAtOnce < 0 ? before : c.storedAtOnce);
    finishPass();
    EXPECT_EQ(defaults.integerForKey(key), c.storedAfterPass);
    EXPECT_EQ(controller.undoManager().undoCount(), c.undoSteps);
}

INSTANTIATE_TEST_SUITE_P(
    AppController, TypedNumber,
    ::testing::Values(TextCase{true, "150", 100, 100, 2}, TextCase{true, "3", 5, 5, 2},
                      TextCase{true, "80a", -1, 80, 1}, TextCase{true, " 70", -1, 70, 1},
                      TextCase{true, "75", 75, 75, 1}, TextCase{true, "100", 100, 100, 1},
                      TextCase{false, "9991", 9990, 9990, 2}, TextCase{false, "9", 10, 10, 2},
                      TextCase{false, "+200", -1, 200, 1}, TextCase{false, "250", 250, 250, 1}));

TEST_F(AppControllerTest, GettersClampNonsenseStoredValues) {
    defaults.setString(DefJpegQuality, QStringLiteral("lots"));
    defaults.setInteger(DefFilesizeLimit, 123456);
    EXPECT_EQ(controller.quality(), QStringLiteral("5"));
    EXPECT_EQ(controller.filesizeLimit(), QStringLiteral("9990"));
    EXPECT_EQ(controller.compression(), 5);
}

TEST_F(AppControllerTest, UndoRestoresEachSettingUnderItsName) {
    struct Case {
        std::function<void()> change;
        QString action;
        std::function<bool()> restored;
    };
    defaults.setBool(DefSharpen, false);
    defaults.setInteger(DefFileFormat, 101);
    defaults.setBool(DefLimitFilesize, true);
    const std::vector<Case> cases = {
        {[&] { controller.setSharpen(true); }, QStringLiteral("Toggle Sharpen"),
         [&] { return !controller.sharpen(); }},
        {[&] { controller.setSharpness(1.5f); }, QStringLiteral("Sharpness Change"),
         [&] { return controller.sharpness() != 1.5f; }},
        {[&] { controller.setFileFormat(102); }, QStringLiteral("Format Change"),
         [&] { return controller.fileFormat() == 101; }},
        {[&] { controller.setPreviewMode(2); }, QStringLiteral("Mode Change"),
         [&] { return controller.previewMode() == 0; }},
        {[&] { controller.setLimitFilesize(false); }, QStringLiteral("Disable Filesize Limit"),
         [&] { return controller.limitFilesize(); }},
        {[&] { controller.setRotation(90); }, QStringLiteral("Rotate"),
         [&] { return controller.rotation() == 0; }},
        {[&] { controller.setScaleFactor(0.5f); }, QStringLiteral("Size Change"),
         [&] { return controller.scaleFactor() == 1.0f; }},
    };
    for (const Case& c : cases) {
        c.change();
        finishPass();
        EXPECT_EQ(controller.undoManager().undoActionName(), c.action);
        controller.undoManager().undo();
        EXPECT_TRUE(c.restored()) << c.action.toStdString();
    }
}

TEST_F(AppControllerTest, EnablingTheLimitWarnsOnceAndStillTurnsItOn) {
    defaults.setBool(DefLimitFilesize, false);
    defaults.setBool(DefDisplaySizeLimitMessage, true);
    answerDontShowAgain = true;
    controller.setLimitFilesize(true);
    EXPECT_TRUE(controller.limitFilesize());
    EXPECT_FALSE(defaults.boolForKey(DefDisplaySizeLimitMessage));
    finishPass();
    EXPECT_EQ(controller.undoManager().undoActionName(), QStringLiteral("Enable Filesize Limit"));
    controller.setLimitFilesize(false);
    controller.setLimitFilesize(true);
    EXPECT_EQ(warningsShown, 1);
}

TEST_F(AppControllerTest, DerivedValuesFollowFormatAndLimit) {
    defaults.setBool(DefLimitFilesize, true);
    defaults.setInteger(DefFileFormat, 101);
    EXPECT_TRUE(controller.hasQuality());
    EXPECT_TRUE(controller.hasFilesizeLimit());
    defaults.setInteger(DefFileFormat, 102);
    EXPECT_FALSE(controller.hasQuality());
    EXPECT_FALSE(controller.hasFilesizeLimit());
}

TEST_F(AppControllerTest, StrayPreviewModesReadAsActualPixels) {
    for (int stored : {1, 3, 7}) {
        output.setImageScaling(0);
        defaults.setInteger(DefPreviewMode, stored);
        EXPECT_EQ(controller.previewMode(), 2);
        EXPECT_EQ(output.imageScaling(), 2);
    }
}

TEST_F(AppControllerTest, ScaleFactorSetterRules) {
    controller.setScaleFactor(1.0f);
    finishPass();
    EXPECT_EQ(controller.undoManager().undoCount(), 0) << "the current value records nothing";
    for (float rejected : {0.0f, -1.0f, std::nanf("")}) {
        controller.setScaleFactor(rejected);
        EXPECT_EQ(controller.scaleFactor(), 1.0f);
    }
    controller.setScaleFactor(0.25f);
    EXPECT_EQ(controller.scaleFactorPercent(), 25);
    controller.setScaleFactorWithoutUndo(0.75f);
    finishPass();
    EXPECT_EQ(controller.scaleFactor(), 0.75f);
    EXPECT_EQ(controller.undoManager().undoCount(), 1);
}

TEST_F(AppControllerTest, PercentFieldSnapsToItsBounds) {
    openGradient();
    controller.setScaleFactorPercent(250);
    EXPECT_EQ(controller.scaleFactor(), 1.0f);
    finishPass();
    EXPECT_EQ(controller.scaleFactor(), 2.0f);
    EXPECT_EQ(controller.pixelWidth(), 800);

    controller.setScaleFactorPercent(0);
    EXPECT_EQ(controller.scaleFactor(), 2.0f) << "0 is rejected";
    controller.setScaleFactorPercent(-5);
    finishPass();
    EXPECT_EQ(controller.scaleFactor(), 2.0f);
}

TEST_F(AppControllerTest, PreviewFollowsSelectionAndScale) {
    openGradient();
    EXPECT_EQ(controller.pixelWidth(), 400);
    EXPECT_EQ(controller.pixelHeight(), 300);
    controller.setScaleFactor(0.5f);
    EXPECT_EQ(controller.pixelWidth(), 200);
    EXPECT_EQ(controller.pixelHeight(), 150);
    controller.deselect();
    EXPECT_TRUE(output.image().isNull());
    EXPECT_EQ(controller.pixelWidth(), 0);
}

TEST_F(AppControllerTest, TypedPixelSizeSetsTheScale) {
    openGradient();
    controller.setPixelWidth(200);
    controller.pixelWidthChanged();
    EXPECT_FLOAT_EQ(controller.scaleFactor(), 0.5f);
    controller.setPixelHeight(600);
    controller.pixelHeightChanged();
    EXPECT_FLOAT_EQ(controller.scaleFactor(), 2.0f);
}

TEST_F(AppControllerTest, SteppingTheOutputSizeKeepsTheProportion) {
    struct Case {
        int w, h, step, expectW, expectH;
    };
    for (const Case c : {Case{400, 300, 10, 410, 307}, Case{300, 400, 10, 307, 410},
                         Case{400, 300, -10, 390, 292}, Case{0, 300, 10, 0, 300}}) {
        controller.setPixelWidth(c.w);
        controller.setPixelHeight(c.h);
        controller.scaleImageByPixels(c.step);
        EXPECT_EQ(controller.pixelWidth(), c.expectW);
        EXPECT_EQ(controller.pixelHeight(), c.expectH);
    }
}

TEST_F(AppControllerTest, SelectAllIsUndoableAndDeselectIsNot) {
    openGradient();
    controller.deselect();
    finishPass();
    EXPECT_EQ(controller.undoManager().undoCount(), 0);
    controller.selectAll();
    finishPass();
    EXPECT_EQ(controller.undoManager().undoActionName(), QStringLiteral("Crop Selection"));
    controller.undoManager().undo();
    EXPECT_TRUE(input.marquee().deselected());
}

TEST_F(AppControllerTest, OpeningAFileResetsTheDocument) {
    const QString path = test::writeJpeg(test::gradientImage(64, 48), dir.path(),
                                         QStringLiteral("holiday.photo.jpg"));
    controller.setScaleFactor(0.5f);
    QString reason;
    ASSERT_TRUE(controller.openFile(path, &reason)) << reason.toStdString();
    EXPECT_EQ(controller.sourcePath(), path);
    EXPECT_EQ(controller.filename(), QStringLiteral("holiday.photo"));
    EXPECT_EQ(controller.scaleFactor(), 1.0f);
    EXPECT_EQ(input.image().pixelsWide(), 64);
    finishPass();
    EXPECT_FALSE(controller.undoManager().canUndo()) << "opening leaves no history";
    controller.setSourcePath({});
    EXPECT_EQ(controller.filename(), QStringLiteral("untitled"));
}

TEST_F(AppControllerTest, BadFilesLeaveTheDocumentAsItWas) {
    openGradient();
    controller.setScaleFactor(0.5f);
    finishPass();
    const Marquee before = input.marquee();
    for (const test::BadFile& bad : test::badImageFiles(dir.path())) {
        QString reason;
        EXPECT_FALSE(controller.openFile(bad.path, &reason)) << bad.fault;
        EXPECT_FALSE(reason.isEmpty()) << bad.fault;
        EXPECT_FALSE(reason.contains(QLatin1Char('\n'))) << bad.fault;
        EXPECT_EQ(input.image().pixelsWide(), 400) << bad.fault;
        EXPECT_EQ(input.marquee(), before) << bad.fault;
        EXPECT_TRUE(controller.undoManager().canUndo()) << bad.fault;
        EXPECT_EQ(controller.scaleFactor(), 0.5f) << bad.fault;
        EXPECT_EQ(controller.documentName(), QStringLiteral("untitled")) << bad.fault;
    }
}

TEST_F(AppControllerTest, PreferencesReachTheProcessorAndView) {
    openGradient();
    defaults.setBool(DefBorder, true);
    defaults.setInteger(DefBorderThickness, 4);
    defaults.setColor(DefBorderColor, QColor(255, 0, 0));
    controller.preferenceDidChange();
    finishPass();
    const test::Rgba corner = test::pixelAt(output.image(), 0, 0);
    EXPECT_EQ(corner, (test::Rgba{255, 0, 0, 255}));
}

}  // namespace
}  // namespace marigold
