#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "output/ImageMetadata.h"
#include "output/JpegSizeSearch.h"
#include "platform/Image.h"

namespace marigold {

// Output formats, as stored under "FileFormat". Anything else is written as JPEG.
enum FileFormatTag { JpegFormat = 101, PngFormat = 102, TiffFormat = 103, GifFormat = 104 };
QString extensionForFormat(int format);

// Copies the EXIF block of a source file into a freshly written JPEG.
using ExifCopier = std::function<void(const QString& sourcePath, const QString& jpegPath)>;

// Everything an output file is written with besides its pixels.
struct OutputSettings {
    int format = JpegFormat;
    int quality = 80;
    int limitKB = 0;  // JPEG only; 0 = no limit
    // 0 none; 1 the source's EXIF block copied into JPEGs (by `copyExif`), its metadata
    // into TIFFs; 2 its metadata into JPEGs and TIFFs.
    int preserveExif = 0;
    std::optional<Metadata> metadata;
    QString sourcePath;
    ExifCopier copyExif;
};

enum class OutputResult { Written, LimitTooLow, WriteFailed };

// Encodes and writes `image` to `path` (atomically) as `settings` say. `trace`, when given,
// receives the JPEG attempts.
OutputResult writeOutputFile(const Image& image, const QString& path,
                             const OutputSettings& settings,
                             std::vector<JpegAttempt>* trace = nullptr);

}  // namespace marigold
