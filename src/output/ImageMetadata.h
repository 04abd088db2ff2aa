#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <optional>

namespace marigold {

// An image's properties as a key-value tree: top-level "Orientation", "DPIWidth",
// "DPIHeight", "PixelWidth", "PixelHeight", and nested dictionaries under the keys below.
// Inside the nested dictionaries tags keep their EXIF / IPTC names ("Make",
// "ExposureTime", "Keywords"); values are numbers, strings, byte arrays or lists of them.
using Metadata = QVariantMap;

namespace metadata {

inline const QString TiffDictionary = QStringLiteral("{TIFF}");
inline const QString ExifDictionary = QStringLiteral("{Exif}");
inline const QString GpsDictionary = QStringLiteral("{GPS}");
inline const QString IptcDictionary = QStringLiteral("{IPTC}");

// The properties of the image file at `path`; nothing for an empty path or a file that
// is not an image.
std::optional<Metadata> metadataForFile(const QString& path);

// Top-level "Orientation", else the TIFF dictionary's, else 1.
int orientation(const Metadata& metadata);

Metadata metadataWithResolution(int dpi);
Metadata metadataByChangingResolution(const Metadata& metadata, int dpi);
// Orientation tags that are present are reset to 1 (upright); none is added.
Metadata metadataByRemovingOrientationTags(const Metadata& metadata);

// The nested dictionary, or an empty map when there is none.
QVariantMap exifDictionary(const Metadata& metadata);
QVariantMap tiffDictionary(const Metadata& metadata);
QVariantMap iptcDictionary(const Metadata& metadata);

// `encoded` (a JPEG or TIFF file's bytes) with `metadata` written into it, the pixels
// untouched. When the metadata cannot be written the bytes come back unchanged.
QByteArray combineDataAndMetadata(const QByteArray& encoded, const Metadata& metadata);

// Rewrites the metadata of the image file at `path` in place, atomically; failures are
// silent.
void writeMetadataToFile(const Metadata& metadata, const QString& path);

}  // namespace metadata
}  // namespace marigold
