#include "output/OutputFile.h"

#include <QFile>

#include "jpeg/ExifTransplant.h"
#include "output/ImageEncoders.h"

namespace marigold {

namespace {

// The bytes of a JPEG file; nothing for any other file, which has no EXIF block to carry and
// may be large.
QByteArray jpegContentsOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.peek(2) != QByteArray("\xFF\xD8")) return {};
    return file.readAll();
}

std::span<const std::uint8_t> bytesOf(const QByteArray& data) {
    return {reinterpret_cast<const std::uint8_t*>(data.constData()), size_t(data.size())};
}

// What an encoded JPEG gets before it is measured against the limit: the dictionary under
// rule 2, the source's EXIF block under rule 1.
JpegFinish metadataStep(const OutputSettings& settings) {
    if (settings.preserveExif == 2 && settings.metadata) {
        return [metadata = *settings.metadata](const QByteArray& jpeg) {
            return metadata::combineDataAndMetadata(jpeg, metadata);
        };
    }
    if (settings.preserveExif != 1 || settings.sourcePath.isEmpty()) return {};
    const QByteArray source = jpegContentsOf(settings.sourcePath);
    if (source.isEmpty()) return {};
    return [source](const QByteArray& jpeg) {
        const auto carried = transplantExifUpright(bytesOf(source), bytesOf(jpeg));
        if (!carried) return jpeg;
        return QByteArray(reinterpret_cast<const char*>(carried->data()),
                          qsizetype(carried->size()));
    };
}

}  // namespace

QString extensionForFormat(int format) {
    switch (format) {
        case PngFormat:
            return QStringLiteral("png");
        case TiffFormat:
            return QStringLiteral("tif");
        case GifFormat:
            return QStringLiteral("gif");
        default:
            return QStringLiteral("jpg");
    }
}

OutputSettings outputSettingsFor(int format, int quality, int limitKB, int preserveExif,
                                 const QString& sourcePath) {
    OutputSettings settings;
    settings.format = format;
    settings.preserveExif = preserveExif;
    settings.sourcePath = sourcePath;
    const bool jpeg = format != PngFormat && format != TiffFormat && format != GifFormat;
    if (jpeg) {
        settings.quality = quality;
        settings.limitKB = limitKB;
    }
    const bool writesDictionary =
        (format == TiffFormat && preserveExif != 0) || (jpeg && preserveExif == 2);
    if (writesDictionary) {
        if (const std::optional<Metadata> read = metadata::metadataForFile(sourcePath)) {
            settings.metadata = metadata::metadataByRemovingOrientationTags(*read);
        }
    }
    return settings;
}

OutputResult writeOutputFile(const Image& image, const QString& path,
                             const OutputSettings& settings, std::vector<JpegAttempt>* trace) {
    const auto written = [](bool ok) {
        return ok ? OutputResult::Written : OutputResult::WriteFailed;
    };
    switch (settings.format) {
        case PngFormat:
            return written(writeToPNGFile(image, path));
        case GifFormat:
            return written(writeToGIFFile(image, path));
        case TiffFormat:
            return written(writeToTIFFFile(
                image, path, settings.preserveExif != 0 ? settings.metadata : std::nullopt));
        default:
            break;
    }
    std::vector<JpegAttempt> attempts;
    const bool ok = writeToJPEGFile(image, path, settings.quality, settings.limitKB,
                                    metadataStep(settings), &attempts);
    if (trace) *trace = attempts;
    if (ok) return OutputResult::Written;
    // An attempt that fitted but was not kept failed in the writing, not in the search.
    const bool fitted = !attempts.empty() &&
                        (settings.limitKB == 0 || attempts.back().size < settings.limitKB * 1024);
    return fitted ? OutputResult::WriteFailed : OutputResult::LimitTooLow;
}

}  // namespace marigold
