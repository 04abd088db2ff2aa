#include "core/HeadlessExport.h"

#include <QFileInfo>
#include <algorithm>
#include <cstdio>

#include "platform/ImageLoader.h"
#include "platform/VipsRuntime.h"
#include "processing/CropGeometry.h"
#include "processing/ImageProcessor.h"
#include "processing/RotationGeometry.h"

namespace marigold {

namespace {

using Sizing = ExportOptions::Sizing;

// Why `path` cannot be written, checked before the (possibly long) decode; empty when it can.
QString outputProblem(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir()) return QStringLiteral("%1: is a folder").arg(path);
    const QFileInfo folder(info.absolutePath());
    if (!folder.isDir()) return QStringLiteral("%1: no such folder").arg(folder.filePath());
    if (!folder.isWritable())
        return QStringLiteral("%1: cannot write in this folder").arg(folder.filePath());
    if (info.exists() && !info.isWritable())
        return QStringLiteral("%1: the file is read-only").arg(path);
    return {};
}

float scaleFor(const ExportOptions& options, const RectF& rect) {
    switch (options.sizing) {
        case Sizing::Width:
            return float(options.size / rect.width);
        case Sizing::Height:
            return float(options.size / rect.height);
        case Sizing::Scale:
            break;
    }
    return float(options.size);
}

// The picture as the window shows it after the same commands: flips and grey on the picture
// as opened, then the turn. Null, with `reason` set, when that cannot be made.
Image changedSource(Image image, const ExportOptions& options, QString* reason) {
    if (options.flipHorizontal) image = ImageProcessor::flipImageHorizontal(image);
    if (options.flipVertical) image = ImageProcessor::flipImageVertical(image);
    if (options.desaturate) image = ImageProcessor::desaturate(image);
    if (image.isNull()) {
        *reason = QStringLiteral("the image could not be processed");
        return {};
    }
    if (options.rotation == 0) return image;
    const Image turned = ImageProcessor::rotateImage(image, options.rotation);
    if (!turned.isNull()) return turned;
    const SizeF size =
        rotatedCanvas(SizeF{float(image.pixelsWide()), float(image.pixelsHigh())}, options.rotation)
            .size;
    const long long wide = (long long)size.width, high = (long long)size.height;
    *reason = wide * high > kMaxOutputPixels
                  ? QStringLiteral(
                        "turned by %1 degrees, the picture would be too large "
                        "(%2 x %3 pixels)")
                        .arg(options.rotation)
                        .arg(wide)
                        .arg(high)
                  : QStringLiteral("the image could not be turned");
    return {};
}

}  // namespace

std::optional<RectF> pipelineRect(PixelRect crop, int wide, int high) {
    const long long left = std::max(crop.x, 0);
    const long long top = std::max(crop.y, 0);
    const long long right = std::min<long long>((long long)crop.x + crop.width, wide);
    const long long bottom = std::min<long long>((long long)crop.y + crop.height, high);
    if (right <= left || bottom <= top) return std::nullopt;
    const RectF rows{float(left), float(top), float(right - left), float(bottom - top)};
    return flipY(rows, high);
}

ExportResult runExport(const ExportOptions& options) {
    ExportResult result;
    const auto failed = [&result](const QString& reason) {
        result.error = reason;
        return result;
    };
    if (const QString problem = outputProblem(options.output); !problem.isEmpty())
        return failed(problem);

    const LoadedImage loaded = loadImageFile(options.input);
    if (loaded.image.isNull())
        return failed(QStringLiteral("%1: %2").arg(options.input, loaded.error));
    QString reason;
    const Image source = changedSource(loaded.image, options, &reason);
    if (source.isNull()) return failed(QStringLiteral("%1: %2").arg(options.input, reason));
    const int wide = source.pixelsWide();
    const int high = source.pixelsHigh();
    std::optional<RectF> rect;
    float scale = 0;
    if (const std::optional<QSize> exact = options.exactSize) {
        const std::optional<SizedCrop> sized =
            exactSizeCrop(wide, high, exact->width(), exact->height());
        if (!sized) {
            return failed(QStringLiteral("a %1 x %2 picture is too small for exactly %3 x %4")
                              .arg(wide)
                              .arg(high)
                              .arg(exact->width())
                              .arg(exact->height()));
        }
        rect = sized->rect;
        scale = sized->scale;
    } else {
        // Centred, so the same in rows counted from the top or from the bottom.
        rect = options.ratio ? largestCentredCrop(wide, high, options.ratio->first,
                                                  options.ratio->second)
                             : pipelineRect(options.crop.value_or(PixelRect{0, 0, wide, high}),
                                            wide, high);
        if (!rect) {
            const PixelRect crop = *options.crop;
            return failed(QStringLiteral("the crop %1,%2,%3,%4 lies outside the %5 x %6 image")
                              .arg(crop.x)
                              .arg(crop.y)
                              .arg(crop.width)
                              .arg(crop.height)
                              .arg(wide)
                              .arg(high));
        }
        scale = scaleFor(options, *rect);
    }
    const CropPlan plan = planCrop(*rect, scale);
    if (plan.isEmpty() || plan.isTooLarge()) {
        return failed(QStringLiteral("the output would be too large (%1 x %2 pixels)")
                          .arg(plan.outputWide)
                          .arg(plan.outputHigh));
    }

    ImageProcessor processor;
    processor.setBorderOn(options.borderThickness > 0);
    processor.setBorderThickness(options.borderThickness);
    processor.setBorderColor(options.borderColor);
    const Image output = processor.cropImage(source, *rect, scale, options.sharpness, false);
    if (output.isNull())
        return failed(QStringLiteral("%1: the image could not be processed").arg(options.input));
    result.wide = output.pixelsWide();
    result.high = output.pixelsHigh();

    const OutputSettings settings = outputSettingsFor(
        options.format, options.quality, options.limitKB, options.preserveExif, options.input);
    switch (writeOutputFile(output, options.output, settings, &result.attempts)) {
        case OutputResult::Written:
            return result;
        case OutputResult::LimitTooLow:
            return failed(QStringLiteral("File Size Limit Too Low: no quality keeps %1 under %2 KB")
                              .arg(options.output)
                              .arg(options.limitKB));
        case OutputResult::WriteFailed:
            break;
    }
    return failed(QStringLiteral("%1: the file could not be written").arg(options.output));
}

int runExportCommand(const QStringList& arguments, const char* argv0) {
    const ParsedExport parsed = parseExportArguments(arguments);
    if (!parsed.options) {
        std::fprintf(stderr, "marigold: %s\n", qPrintable(parsed.error));
        return 2;
    }
    if (parsed.options->help) {
        std::fputs(qPrintable(exportHelpText()), stdout);
        return 0;
    }
    // Started only now: unusable arguments are answered without loading libvips' modules.
    if (!startVips(argv0, VipsModules::Deferred)) return 1;
    setVipsWarningsShown(parsed.options->verbose);
    const ExportResult result = runExport(*parsed.options);
    if (parsed.options->verbose) {
        for (const JpegAttempt& attempt : result.attempts) {
            std::fprintf(stderr, "quality %d, %s%d bytes\n", attempt.quality,
                         attempt.stopped ? "at least " : "", attempt.size);
        }
    }
    if (!result.error.isEmpty()) {
        std::fprintf(stderr, "marigold: %s\n", qPrintable(result.error));
        return 1;
    }
    if (parsed.options->verbose) {
        std::fprintf(stderr, "wrote %s: %d x %d pixels, %lld bytes\n",
                     qPrintable(parsed.options->output), result.wide, result.high,
                     (long long)QFileInfo(parsed.options->output).size());
    }
    return 0;
}

}  // namespace marigold
