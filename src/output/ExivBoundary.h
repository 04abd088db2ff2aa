#pragma once

// The shared ground of the metadata reader and writer: the key names, which tags stay out of
// dictionaries, the JFIF density and the one wrapper around Exiv2. Only they include it.

#include <QByteArray>
#include <QString>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

// Exiv2 0.27 hands out std::auto_ptr everywhere; the deprecation is theirs, not ours.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

#include "output/ImageMetadata.h"

namespace marigold::metadata::exiv {

inline const QString OrientationKey = QStringLiteral("Orientation");
inline const QString DpiWidthKey = QStringLiteral("DPIWidth");
inline const QString DpiHeightKey = QStringLiteral("DPIHeight");
inline const QString XResolutionKey = QStringLiteral("XResolution");
inline const QString YResolutionKey = QStringLiteral("YResolution");

// The Exif groups that become dictionaries; everything else (thumbnail IFD1, interoperability,
// maker notes) stays out.
struct Group {
    const char* exivGroup;
    const QString& dictionary;
};
inline const Group Groups[] = {
    {"Image", TiffDictionary}, {"Photo", ExifDictionary}, {"GPSInfo", GpsDictionary}};

// Tags that locate or describe the source file's own pixels, sub-directories or embedded
// blocks. Written into another file they would point its readers at the wrong bytes, so they
// never enter a dictionary and are never written from one.
inline bool isStructural(const std::string& group, const std::string& tag) {
    // clang-format off
    static const std::set<std::string> image = {
        "NewSubfileType", "SubfileType", "ImageWidth", "ImageLength", "BitsPerSample",
        "Compression", "PhotometricInterpretation", "Thresholding", "CellWidth", "CellLength",
        "FillOrder", "StripOffsets", "SamplesPerPixel", "RowsPerStrip", "StripByteCounts",
        "MinSampleValue", "MaxSampleValue", "PlanarConfiguration", "GrayResponseUnit",
        "GrayResponseCurve", "T4Options", "T6Options", "Predictor", "ColorMap", "TileWidth",
        "TileLength", "TileOffsets", "TileByteCounts", "SubIFDs", "ExtraSamples", "SampleFormat",
        "SMinSampleValue", "SMaxSampleValue", "JPEGTables", "JPEGProc", "JPEGInterchangeFormat",
        "JPEGInterchangeFormatLength", "JPEGRestartInterval", "JPEGLosslessPredictors",
        "JPEGPointTransforms", "JPEGQTables", "JPEGDCTables", "JPEGACTables",
        "YCbCrCoefficients", "YCbCrSubSampling", "InterColorProfile", "ExifTag", "GPSTag",
        "XMLPacket", "IPTCNAA", "ImageResources", "PrintImageMatching", "DNGPrivateData"};
    // clang-format on
    if (group == "Image") return image.count(tag) > 0;
    if (group == "Photo") return tag == "MakerNote" || tag == "InteroperabilityTag";
    return false;
}

// The one boundary with Exiv2: its errors become "no result", and its log stays quiet so
// hostile files cannot flood stderr.
inline void startExiv2() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize();
    });
}

template <typename F>
auto guarded(F&& body) -> std::optional<decltype(body())> {
    startExiv2();
    try {
        return body();
    } catch (const std::exception&) {  // Exiv2::AnyError included
        return std::nullopt;
    }
}

// --- JFIF APP0 density: SOI, FFE0, length, "JFIF\0", version, units, x, y.

inline constexpr int JfifUnitsOffset = 13;

inline bool startsWithJfif(const QByteArray& data) {
    if (data.size() < JfifUnitsOffset + 5) return false;
    const auto* b = reinterpret_cast<const uchar*>(data.constData());
    const int length = (b[4] << 8) | b[5];
    return b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF && b[3] == 0xE0 && length >= 16 &&
           data.mid(6, 5) == QByteArray("JFIF\0", 5);
}

inline std::optional<std::pair<double, double>> jfifDpi(const QByteArray& head) {
    if (!startsWithJfif(head)) return std::nullopt;
    const auto* b = reinterpret_cast<const uchar*>(head.constData()) + JfifUnitsOffset;
    const double x = (b[1] << 8) | b[2], y = (b[3] << 8) | b[4];
    if (x <= 0 || y <= 0) return std::nullopt;
    if (b[0] == 1) return std::pair(x, y);
    if (b[0] == 2) return std::pair(x * 2.54, y * 2.54);
    return std::nullopt;  // 0: an aspect ratio, not a density
}

}  // namespace marigold::metadata::exiv
