#include "output/ImageMetadata.h"

#include "output/ExivBoundary.h"

namespace marigold::metadata {

using namespace exiv;

int orientation(const Metadata& metadata) {
    const auto valid = [](const QVariantMap& map) -> std::optional<int> {
        if (!map.contains(OrientationKey)) return std::nullopt;
        bool ok = false;
        const int value = map.value(OrientationKey).toInt(&ok);
        return ok && value >= 1 && value <= 8 ? std::optional(value) : std::nullopt;
    };
    return valid(metadata).value_or(valid(tiffDictionary(metadata)).value_or(1));
}

Metadata metadataWithResolution(int dpi) {
    return {{DpiHeightKey, dpi},
            {DpiWidthKey, dpi},
            {TiffDictionary, QVariantMap{{XResolutionKey, dpi}, {YResolutionKey, dpi}}}};
}

Metadata metadataByChangingResolution(const Metadata& metadata, int dpi) {
    Metadata result = metadata;
    result.insert(DpiWidthKey, dpi);
    result.insert(DpiHeightKey, dpi);
    if (metadata.value(TiffDictionary).typeId() == QMetaType::QVariantMap) {
        QVariantMap tiff = tiffDictionary(metadata);
        for (const QString& key : {XResolutionKey, YResolutionKey})
            if (tiff.contains(key)) tiff.insert(key, dpi);
        result.insert(TiffDictionary, tiff);
    }
    return result;
}

Metadata metadataByRemovingOrientationTags(const Metadata& metadata) {
    Metadata result = metadata;
    if (result.contains(OrientationKey)) result.insert(OrientationKey, 1);
    if (metadata.value(TiffDictionary).typeId() == QMetaType::QVariantMap) {
        QVariantMap tiff = tiffDictionary(metadata);
        if (tiff.contains(OrientationKey)) tiff.insert(OrientationKey, 1);
        result.insert(TiffDictionary, tiff);
    }
    return result;
}

QVariantMap exifDictionary(const Metadata& metadata) {
    return metadata.value(ExifDictionary).toMap();
}

QVariantMap tiffDictionary(const Metadata& metadata) {
    return metadata.value(TiffDictionary).toMap();
}

QVariantMap iptcDictionary(const Metadata& metadata) {
    return metadata.value(IptcDictionary).toMap();
}

}  // namespace marigold::metadata
