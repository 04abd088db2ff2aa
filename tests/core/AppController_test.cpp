#include "core/AppController.h"

#include <gtest/gtest.h>

#include "platform/DefaultsKeys.h"
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
                      TextCase{true, "100", 100, 100, 1}, TextCase{false, "9991", 9990, 9990, 2},
                      TextCase{false, "9", 10, 10, 2}, TextCase{false, "+200", -1, 200, 1},
                      TextCase{false, "250", 250, 250, 1}));

TEST_F(AppControllerTest, GettersClampNonsenseStoredValues) {
    defaults.setString(DefJpegQuality, QStringLiteral("lots"));
    defaults.setInteger(DefFilesizeLimit, 123456);
    // Text that is no number reads as the factory value; a number out of range clamps.
    EXPECT_EQ(controller.quality(), QStringLiteral("80"));
    EXPECT_EQ(controller.filesizeLimit(), QStringLiteral("9990"));
    EXPECT_EQ(controller.compression(), 80);
    for (int stray : {1, 3, 7}) {
        defaults.setInteger(DefPreviewMode, stray);
        EXPECT_EQ(controller.previewMode(), 2) << "stored " << stray;
    }
    defaults.setBool(DefLimitFilesize, true);
    defaults.setInteger(DefFileFormat, 102);
    EXPECT_FALSE(controller.hasQuality());
    EXPECT_FALSE(controller.hasFilesizeLimit()) << "a limit is for JPEG only";
}

TEST_F(AppControllerTest, UndoRestoresEachSettingUnderItsName) {
    struct Case {
        std::function<void()> change;
        QString action;
        std::function<bool()> restored;
    };
    open(test::gradientImage(40, 30));
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
        {[&] { controller.setScaleFactor(0.5f); }, QStringLiteral("Size Change"),
         [&] { return controller.scaleFactor() == 1.0f; }},
        // Undo after Deselect brings back the selection that was removed.
        {[&] { controller.deselect(); }, QStringLiteral("Crop Selection"),
         [&] { return document().cropRect() == RectF{0, 0, 40, 30}; }},
        // Last: a turn deselects.
        {[&] { controller.setRotation(90); }, QStringLiteral("Rotate"),
         [&] { return controller.rotation() == 0; }},
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
    window.answerDontShowAgain = true;
    controller.setLimitFilesize(true);
    EXPECT_TRUE(controller.limitFilesize());
    EXPECT_FALSE(defaults.boolForKey(DefDisplaySizeLimitMessage));
    finishPass();
    EXPECT_EQ(controller.undoManager().undoActionName(), QStringLiteral("Enable Filesize Limit"));
    controller.setLimitFilesize(false);
    controller.setLimitFilesize(true);
    EXPECT_EQ(window.warningsShown, 1);
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

TEST_F(AppControllerTest, AScaleDragIsOneUndoStep) {
    open(test::gradientImage(400, 300));
    for (float factor : {0.5f, 0.6f, 0.7f}) {
        controller.dragScaleFactor(factor);
        finishPass();
    }
    EXPECT_EQ(controller.pixelWidth(), 280);
    EXPECT_EQ(controller.undoManager().undoCount(), 0) << "no step while dragging";
    controller.finishScaleDrag(1.0f, 0.7f);
    finishPass();
    ASSERT_EQ(controller.undoManager().undoCount(), 1);
    EXPECT_EQ(controller.undoManager().undoActionName(), QStringLiteral("Size Change"));
    controller.undoManager().undo();
    EXPECT_EQ(controller.scaleFactor(), 1.0f);
    controller.undoManager().redo();
    EXPECT_EQ(controller.scaleFactor(), 0.7f);
}

TEST_F(AppControllerTest, PercentFieldSnapsToItsBounds) {
    open(test::gradientImage(400, 300));
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

TEST_F(AppControllerTest, PreviewAndFieldsFollowSelectionAndScale) {
    open(test::gradientImage(400, 300));
    EXPECT_EQ(preview.pixelsWide(), 400);
    EXPECT_EQ(controller.pixelHeight(), 300);
    controller.setScaleFactor(0.5f);
    EXPECT_EQ(controller.pixelWidth(), 200);
    EXPECT_EQ(controller.pixelHeight(), 150);
    EXPECT_EQ(preview.size().width, 200.0f);
    controller.deselect();
    EXPECT_TRUE(preview.isNull());
    EXPECT_EQ(controller.pixelWidth(), 0);
}

// Typing 800 gave 801, and committing an untouched field added a pixel and an undo step.
TEST_F(AppControllerTest, ATypedSizeIsExactlyTheOutputsSize) {
    open(test::gradientImage(2725, 2225));
    Marquee dragged;
    dragged.setStartAndEndPoint({0.0917f, 0.1033f}, {0, 0, 1, 1});
    dragged.setEndPoint({0.8471f, 0.9388f}, {0, 0, 1, 1});
    for (const Marquee& selection : {document().marquee(), dragged}) {
        controller.setMarquee(selection);
        for (int typed : {800, 1000, 333, 2725, 4099}) {
            controller.setPixelWidth(typed);
            controller.pixelWidthChanged();
            EXPECT_EQ(controller.pixelWidth(), typed);
            EXPECT_EQ(document().cropPlan().outputWide, typed);
            controller.setPixelHeight(typed);
            controller.pixelHeightChanged();
            EXPECT_EQ(document().cropPlan().outputHigh, typed);
        }
    }
    finishPass();
    const int steps = controller.undoManager().undoCount();
    const float scale = controller.scaleFactor();
    for (int i = 0; i < 3; ++i) {
        controller.setPixelWidth(controller.pixelWidth());
        controller.pixelWidthChanged();
        finishPass();
    }
    EXPECT_EQ(controller.scaleFactor(), scale);
    EXPECT_EQ(controller.undoManager().undoCount(), steps);
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

// 200 % of a large photo left the output pane silently empty.
TEST_F(AppControllerTest, AnOutputBeyondTheLimitIsSaidInsteadOfShown) {
    open(test::gradientImage(400, 300));
    controller.setScaleFactorWithoutUndo(50.0f);  // 20000 x 15000: 300 megapixels
    controller.updatePreview();
    EXPECT_TRUE(preview.isNull());
    EXPECT_TRUE(previewMessage.startsWith(QStringLiteral("20000 × 15000 pixels")))
        << previewMessage.toStdString();
    EXPECT_FALSE(controller.hasOutput());
    EXPECT_TRUE(controller.writeTmpFile().isEmpty());
    controller.setScaleFactorWithoutUndo(40.0f);  // 192 megapixels: within the limit
    controller.updatePreviewFast(true);
    EXPECT_FALSE(preview.isNull());
    EXPECT_TRUE(previewMessage.isEmpty());
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
    EXPECT_EQ(document().image().pixelsWide(), 64);
    finishPass();
    EXPECT_FALSE(controller.undoManager().canUndo()) << "opening leaves no history";
    EXPECT_TRUE(window.notices.isEmpty());
    controller.setSourcePath({});
    EXPECT_EQ(controller.filename(), QStringLiteral("untitled"));
}

TEST_F(AppControllerTest, BadFilesLeaveTheDocumentAsItWasAndSayWhy) {
    open(test::gradientImage(400, 300));
    controller.setScaleFactor(0.5f);
    finishPass();
    const Marquee before = document().marquee();
    for (const test::BadFile& bad : test::badImageFiles(dir.path())) {
        if (bad.partlyReadable) continue;
        window.notices.clear();
        QString reason;
        EXPECT_FALSE(controller.openFile(bad.path, &reason)) << bad.fault;
        EXPECT_FALSE(reason.isEmpty() || reason.contains(QLatin1Char('\n'))) << bad.fault;
        ASSERT_EQ(window.notices.size(), 1) << bad.fault;
        EXPECT_TRUE(window.notices.first().contains(reason)) << bad.fault;
        EXPECT_EQ(document().image().pixelsWide(), 400) << bad.fault;
        EXPECT_EQ(document().marquee(), before) << bad.fault;
        EXPECT_TRUE(controller.undoManager().canUndo()) << bad.fault;
        EXPECT_EQ(controller.scaleFactor(), 0.5f) << bad.fault;
        EXPECT_EQ(controller.documentName(), QStringLiteral("photo")) << bad.fault;
    }
}

// A JPEG with a damaged tail was refused where every viewer shows what decodes.
TEST_F(AppControllerTest, ADamagedTailOpensWithANotice) {
    for (const test::BadFile& bad : test::badImageFiles(dir.path())) {
        if (!bad.partlyReadable) continue;
        window.notices.clear();
        ASSERT_TRUE(controller.openFile(bad.path)) << bad.fault;
        EXPECT_EQ(document().image().pixelsWide(), 640) << bad.fault;
        ASSERT_EQ(window.notices.size(), 1) << bad.fault;
        EXPECT_TRUE(window.notices.first().contains(QStringLiteral("damaged")));
    }
}

TEST_F(AppControllerTest, PreferencesReachTheProcessor) {
    open(test::gradientImage(400, 300));
    defaults.setBool(DefBorder, true);
    defaults.setInteger(DefBorderThickness, 4);
    defaults.setColor(DefBorderColor, QColor(255, 0, 0));
    controller.preferenceDidChange();
    finishPass();
    EXPECT_EQ(test::pixelAt(preview, 0, 0), (test::Rgba{255, 0, 0, 255}));
}

}  // namespace
}  // namespace marigold
