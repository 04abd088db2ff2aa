#include "output/OutputFile.h"

#include "output/ImageEncoders.h"

namespace marigold {

QString extensionForFormat(int format) {
    switch (format) {
        case PngFormat: return QStringLiteral("png");
        case TiffFormat: return QStringLiteral("tif");
        case GifFormat: return QStringLiteral("gif");
        default: return QStringLiteral("jpg");
    }
}

OutputResult writeOutputFile(const Image& image, const QString& path,
                             const OutputSettings& settings, std::vector<JpegAttempt>* trace) {
    const auto written = [](bool ok) { return ok ? OutputResult::Written : OutputResult::WriteFailed; };
    switch (settings.format) {
        case PngFormat: return written(writeToPNGFile(image, path));
        case GifFormat: return written(writeToGIFFile(image, path));
        case TiffFormat:
            return written(writeToTIFFFile(
                image, path, settings.preserveExif != 0 ? settings.metadata : std::nullopt));
        default: break;
    }
    std::vector<JpegAttempt> attempts;
    const bool ok = writeToJPEGFile(image, path, settings.quality, settings.limitKB,
                                    settings.preserveExif == 2 ? settings.metadata : std::nullopt,
                                    &attempts);
    if (trace) *trace = attempts;
    if (!ok) {
        // An attempt that fitted but was not kept failed in the writing, not in the search.
        const bool fitted = !attempts.empty() &&
                            (settings.limitKB == 0 || attempts.back().size < settings.limitKB * 1024);
        return fitted ? OutputResult::WriteFailed : OutputResult::LimitTooLow;
    }
    if (settings.preserveExif == 1 && !settings.sourcePath.isEmpty() && settings.copyExif) {
        settings.copyExif(settings.sourcePath, path);
    }
    return OutputResult::Written;
}

}  // namespace marigold
