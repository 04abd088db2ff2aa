// Reading an image file's metadata into a dictionary: Exiv2 values become numbers, strings,
// byte arrays and lists of them.
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <cmath>
#include <stdexcept>

#include "output/ExivBoundary.h"

namespace marigold::metadata {

using namespace exiv;

namespace {

QVariant listOrSingle(const QVariantList& items) {
    if (items.isEmpty()) return {};
    return items.size() == 1 ? items.front() : QVariant(items);
}

template <typename R>
QVariant rationals(const Exiv2::Value& value) {
    const auto* typed = dynamic_cast<const Exiv2::ValueType<R>*>(&value);
    if (!typed) return {};
    QVariantList items;
    for (const R& r : typed->value_) {
        if (r.second == 0) return {};  // 0/0 means "unknown" in the wild; leave the tag out
        items.append(double(r.first) / double(r.second));
    }
    return listOrSingle(items);
}

QString textFrom(const std::string& bytes, bool utf8 = true) {
    std::string s = bytes;
    while (!s.empty() && s.back() == '\0') s.pop_back();
    return utf8 ? QString::fromUtf8(s.data(), qsizetype(s.size()))
                : QString::fromLatin1(s.data(), qsizetype(s.size()));
}

QVariant exifValue(const Exiv2::Exifdatum& datum) {
    const Exiv2::Value& value = datum.value();
    if (value.count() <= 0) return {};
    if (const auto* comment = dynamic_cast<const Exiv2::CommentValue*>(&value))
        return textFrom(comment->comment());
    QVariantList items;
    switch (datum.typeId()) {
        case Exiv2::asciiString:
            return textFrom(value.toString());
        case Exiv2::unsignedRational:
            return rationals<Exiv2::URational>(value);
        case Exiv2::signedRational:
            return rationals<Exiv2::Rational>(value);
        case Exiv2::undefined: {
            QByteArray bytes(int(value.size()), Qt::Uninitialized);
            value.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::littleEndian);
            return bytes;
        }
        case Exiv2::tiffFloat:
        case Exiv2::tiffDouble:
            for (long i = 0; i < value.count(); ++i) items.append(double(value.toFloat(i)));
            return listOrSingle(items);
        case Exiv2::unsignedByte:
        case Exiv2::signedByte:
        case Exiv2::unsignedShort:
        case Exiv2::signedShort:
        case Exiv2::unsignedLong:
        case Exiv2::signedLong:
            for (long i = 0; i < value.count(); ++i) items.append(qlonglong(value.toLong(i)));
            return listOrSingle(items);
        default:
            return textFrom(value.toString());
    }
}

QVariant iptcValue(const Exiv2::Iptcdatum& datum, bool utf8) {
    switch (datum.typeId()) {
        case Exiv2::unsignedShort:
            return qlonglong(datum.toLong(0));
        case Exiv2::undefined: {
            QByteArray bytes(int(datum.size()), Qt::Uninitialized);
            datum.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::bigEndian);
            return bytes;
        }
        default:
            return textFrom(datum.toString(), utf8);
    }
}

// "DPIWidth"/"DPIHeight" from the EXIF resolution, converted from centimetres where needed.
void addDpi(Metadata& result, const Exiv2::ExifData& exif) {
    const auto unitPos = exif.findKey(Exiv2::ExifKey("Exif.Image.ResolutionUnit"));
    const long unit = unitPos != exif.end() && unitPos->count() > 0 ? unitPos->toLong(0) : 2;
    const double scale = unit == 2 ? 1.0 : unit == 3 ? 2.54 : 0.0;
    const std::pair<const char*, QString> axes[] = {{"Exif.Image.XResolution", DpiWidthKey},
                                                    {"Exif.Image.YResolution", DpiHeightKey}};
    for (const auto& [tag, key] : axes) {
        const auto pos = exif.findKey(Exiv2::ExifKey(tag));
        if (pos == exif.end() || scale == 0.0) continue;
        const double dpi = exifValue(*pos).toDouble() * scale;
        if (std::isfinite(dpi) && dpi > 0) result.insert(key, dpi);
    }
}

Metadata dictionaryOf(const Exiv2::Image& image, const QByteArray& head) {
    Metadata result;
    QVariantMap groups[std::size(Groups)];
    for (const Exiv2::Exifdatum& datum : image.exifData()) {
        const std::string group = datum.groupName(), tag = datum.tagName();
        for (size_t g = 0; g < std::size(Groups); ++g) {
            if (group != Groups[g].exivGroup || isStructural(group, tag)) continue;
            if (const QVariant value = exifValue(datum); value.isValid())
                groups[g].insert(QString::fromStdString(tag), value);
        }
    }
    for (size_t g = 0; g < std::size(Groups); ++g)
        if (!groups[g].isEmpty()) result.insert(Groups[g].dictionary, groups[g]);
    const QVariantMap tiff = result.value(TiffDictionary).toMap();
    if (const int o = tiff.value(OrientationKey).toInt(); o >= 1 && o <= 8)
        result.insert(OrientationKey, o);
    addDpi(result, image.exifData());
    if (!result.contains(DpiWidthKey) && !result.contains(DpiHeightKey)) {
        if (const auto dpi = jfifDpi(head)) {
            result.insert(DpiWidthKey, dpi->first);
            result.insert(DpiHeightKey, dpi->second);
        }
    }
    if (image.pixelWidth() > 0 && image.pixelHeight() > 0) {
        result.insert(QStringLiteral("PixelWidth"), image.pixelWidth());
        result.insert(QStringLiteral("PixelHeight"), image.pixelHeight());
    }

    const Exiv2::IptcData& iptc = image.iptcData();
    const char* charset = iptc.detectCharset();
    const bool utf8 = charset != nullptr;  // ASCII or UTF-8; anything else is Latin-1
    QVariantMap iptcDict;
    for (const Exiv2::Iptcdatum& datum : iptc) {
        if (datum.record() != Exiv2::IptcDataSets::application2) continue;
        const QString name = QString::fromStdString(datum.tagName());
        const QVariant value = iptcValue(datum, utf8);
        if (Exiv2::IptcDataSets::dataSetRepeatable(datum.tag(), datum.record())) {
            QVariantList items = iptcDict.value(name).toList();
            items.append(value);
            iptcDict.insert(name, items);
        } else {
            iptcDict.insert(name, value);
        }
    }
    if (!iptcDict.isEmpty()) result.insert(IptcDictionary, iptcDict);
    return result;
}

}  // namespace

std::optional<Metadata> metadataForFile(const QString& path) {
    if (path.isEmpty()) return std::nullopt;
    const QFileInfo info(path);
    if (!info.isFile() || !info.isReadable() || info.size() == 0) return std::nullopt;
    QByteArray head;
    if (QFile file(path); file.open(QIODevice::ReadOnly)) head = file.read(32);
    return guarded([&] {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        if (!image.get()) throw std::runtime_error("not an image");
        image->readMetadata();
        return dictionaryOf(*image, head);
    });
}

}  // namespace marigold::metadata
