#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "output/ImageMetadata.h"
#include "output/JpegSizeSearch.h"
#include "platform/Image.h"

namespace marigold {

// Output formats, as stored under "FileFormat". Anything else is written as JPEG.
enum FileFormatTag { JpegFormat = 101, PngFormat = 102, TiffFormat = 103, GifFormat = 104 };
QString extensionForFormat(int format);

// Everything an output file is written with besides its pixels.
struct OutputSettings {
    int format = JpegFormat;
    int quality = 80;
    int limitKB = 0;  // JPEG only; 0 = no limit
    // 0 none; 1 the source's EXIF block carried into JPEGs, its metadata into TIFFs; 2 its
    // metadata into JPEGs and TIFFs. PNG and GIF carry none.
    int preserveExif = 0;
    // The source's metadata, marked upright, where the rule writes it.
    std::optional<Metadata> metadata;
    // Whose EXIF block a JPEG carries under rule 1.
    QString sourcePath;
};

// The one place that turns the output choices into settings, for the window and the command
// line alike: the limit kept for JPEG only, the source's metadata read where the rule writes
// it. Pictures are opened upright, so every orientation tag written says upright.
OutputSettings outputSettingsFor(int format, int quality, int limitKB, int preserveExif,
                                 const QString& sourcePath);

enum class OutputResult { Written, LimitTooLow, WriteFailed };

// Encodes and writes `image` to `path` (atomically) as `settings` say. A size limit covers
// the whole file, metadata included. `trace`, when given, receives the JPEG attempts.
OutputResult writeOutputFile(const Image& image, const QString& path,
                             const OutputSettings& settings,
                             std::vector<JpegAttempt>* trace = nullptr);

}  // namespace marigold
