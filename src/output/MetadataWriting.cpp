// Writing a dictionary into an encoded JPEG or TIFF without touching its pixels: values go
// back into Exiv2's types, and the resolution is patched where Exiv2 does not reach.
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cmath>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>

#include "output/ExivBoundary.h"

namespace marigold::metadata {

using namespace exiv;

namespace {

QVariantList itemsOf(const QVariant& value) {
    const int type = value.typeId();
    if (type == QMetaType::QVariantList || type == QMetaType::QStringList) return value.toList();
    return {value};
}

std::optional<double> numberOf(const QVariant& value) {
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || !std::isfinite(number)) return std::nullopt;
    return number;
}

// Continued fractions give 1/3 for a third, where a fixed denominator would give
// 333333/1000000; numerator and denominator stay within `limit`.
std::optional<std::pair<qint64, qint64>> rationalFor(double x, double limit) {
    const double a = std::abs(x);
    qint64 h0 = 0, h1 = 1, k0 = 1, k1 = 0;
    double f = a;
    for (int i = 0; i < 64; ++i) {
        const double whole = std::floor(f);
        const double h2 = whole * double(h1) + double(h0), k2 = whole * double(k1) + double(k0);
        if (h2 > limit || k2 > limit) break;
        h0 = h1, h1 = qint64(h2), k0 = k1, k1 = qint64(k2);
        if (std::abs(a - double(h1) / double(k1)) <= 1e-12 * std::max(1.0, a)) break;
        if (f - whole < 1e-15) break;
        f = 1.0 / (f - whole);
    }
    if (k1 == 0) return std::nullopt;
    return std::pair(x < 0 ? -h1 : h1, k1);
}

bool integerFits(Exiv2::TypeId type, double n) {
    static const std::map<Exiv2::TypeId, std::pair<double, double>> ranges = {
        {Exiv2::unsignedByte, {0, 255}},
        {Exiv2::signedByte, {-128, 127}},
        {Exiv2::unsignedShort, {0, 65535}},
        {Exiv2::signedShort, {-32768, 32767}},
        {Exiv2::unsignedLong, {0, 4294967295.0}},
        {Exiv2::signedLong, {-2147483648.0, 2147483647.0}}};
    const auto range = ranges.find(type);
    return range != ranges.end() && n == std::floor(n) && n >= range->second.first &&
           n <= range->second.second;
}

// The text form Exiv2's value parsers read: numbers separated by spaces, rationals as n/d.
std::optional<std::string> numbersText(Exiv2::TypeId type, const QVariant& value) {
    std::string text;
    for (const QVariant& item : itemsOf(value)) {
        const std::optional<double> n = numberOf(item);
        if (!n) return std::nullopt;
        if (!text.empty()) text += ' ';
        if (type == Exiv2::unsignedRational || type == Exiv2::signedRational) {
            const bool isUnsigned = type == Exiv2::unsignedRational;
            if (isUnsigned && *n < 0) return std::nullopt;
            const auto r = rationalFor(*n, isUnsigned ? 4294967295.0 : 2147483647.0);
            if (!r) return std::nullopt;
            text += std::to_string(r->first) + '/' + std::to_string(r->second);
        } else if (type == Exiv2::tiffFloat || type == Exiv2::tiffDouble) {
            text += QString::number(*n, 'g', 17).toStdString();
        } else {
            if (!integerFits(type, *n)) return std::nullopt;
            text += std::to_string(qint64(*n));
        }
    }
    if (text.empty()) return std::nullopt;
    return text;
}

// The type an unknown tag is written with, guessed from the value itself.
Exiv2::TypeId typeForVariant(const QVariant& value) {
    if (value.typeId() == QMetaType::QString) return Exiv2::asciiString;
    if (value.typeId() == QMetaType::QByteArray) return Exiv2::undefined;
    bool integral = true, negative = false;
    for (const QVariant& item : itemsOf(value)) {
        const double n = numberOf(item).value_or(0.5);
        integral = integral && n == std::floor(n);
        negative = negative || n < 0;
    }
    if (integral) return negative ? Exiv2::signedLong : Exiv2::unsignedLong;
    return negative ? Exiv2::signedRational : Exiv2::unsignedRational;
}

bool isAscii(const QString& text) {
    for (const QChar c : text)
        if (c.unicode() > 0x7F) return false;
    return true;
}

std::unique_ptr<Exiv2::Value> exivValue(Exiv2::TypeId type, const QVariant& value) {
    std::unique_ptr<Exiv2::Value> result;
    if (type == Exiv2::undefined ||
        (type == Exiv2::comment && value.typeId() == QMetaType::QByteArray)) {
        const QByteArray bytes = value.toByteArray();
        if (bytes.isEmpty()) return nullptr;
        result = std::make_unique<Exiv2::DataValue>(Exiv2::undefined);
        result->read(reinterpret_cast<const Exiv2::byte*>(bytes.constData()), bytes.size(),
                     Exiv2::littleEndian);
        return result;
    }
    std::string text;
    if (type == Exiv2::asciiString || type == Exiv2::comment) {
        if (itemsOf(value).size() != 1 || !value.canConvert<QString>()) return nullptr;
        const QString string = value.toString();
        text = string.toStdString();
        if (type == Exiv2::comment)
            text = (isAscii(string) ? "charset=Ascii " : "charset=Unicode ") + text;
    } else if (const auto numbers = numbersText(type, value)) {
        text = *numbers;
    } else {
        return nullptr;
    }
    result.reset(Exiv2::Value::create(type).release());
    if (!result || result->read(text) != 0) return nullptr;
    return result;
}

// Writes one tag; a key Exiv2 cannot name or a value that does not fit is skipped.
void setExif(Exiv2::ExifData& exif, const std::string& keyText, const QVariant& value) {
    guarded([&] {
        const Exiv2::ExifKey key(keyText);
        const bool unknown = key.tagName().rfind("0x", 0) == 0;
        const auto exivVal =
            exivValue(unknown ? typeForVariant(value) : key.defaultTypeId(), value);
        if (exivVal) exif[keyText].setValue(exivVal.get());
        return true;
    });
}

void setIptc(Exiv2::IptcData& iptc, const QString& name, const QVariant& value) {
    guarded([&] {
        const Exiv2::IptcKey key("Iptc.Application2." + name.toStdString());
        for (auto it = iptc.findKey(key); it != iptc.end(); it = iptc.findKey(key)) iptc.erase(it);
        const Exiv2::TypeId type = Exiv2::IptcDataSets::dataSetType(key.tag(), key.record());
        QVariantList items = itemsOf(value);
        if (!Exiv2::IptcDataSets::dataSetRepeatable(key.tag(), key.record()))
            items = items.mid(0, 1);
        for (const QVariant& item : items) {
            const std::unique_ptr<Exiv2::Value> v(Exiv2::Value::create(type).release());
            if (v->read(item.toString().toStdString()) == 0) iptc.add(key, v.get());
        }
        return true;
    });
}

// --- Resolution patched into the bytes, where Exiv2 does not reach.

// DPI from the top-level keys, each axis falling back to the other.
std::optional<std::pair<double, double>> topLevelDpi(const Metadata& metadata) {
    const auto positive = [&](const QString& key) -> std::optional<double> {
        const std::optional<double> n = numberOf(metadata.value(key));
        return n && *n > 0 ? n : std::nullopt;
    };
    const std::optional<double> x = positive(DpiWidthKey), y = positive(DpiHeightKey);
    if (!x && !y) return std::nullopt;
    return std::pair(x.value_or(*y), y.value_or(*x));
}

// The resolution a written file should carry: the DPI keys, else the TIFF dictionary's.
std::optional<std::pair<double, double>> resolutionOf(const Metadata& metadata) {
    if (const auto dpi = topLevelDpi(metadata)) return dpi;
    const QVariantMap tiff = tiffDictionary(metadata);
    const std::optional<double> x = numberOf(tiff.value(XResolutionKey)),
                                y = numberOf(tiff.value(YResolutionKey));
    const double unit = numberOf(tiff.value(QStringLiteral("ResolutionUnit"))).value_or(2);
    const double scale = unit == 2 ? 1.0 : unit == 3 ? 2.54 : 0.0;
    if (!x || !y || *x <= 0 || *y <= 0 || scale == 0.0) return std::nullopt;
    return std::pair(*x * scale, *y * scale);
}

void patchJfifDpi(QByteArray& data, std::pair<double, double> dpi) {
    const auto fits = [](double v) { return v >= 1 && v <= 65535; };
    if (!startsWithJfif(data) || !fits(dpi.first) || !fits(dpi.second)) return;
    const int x = int(std::lround(dpi.first)), y = int(std::lround(dpi.second));
    char* b = data.data() + JfifUnitsOffset;
    b[0] = 1;
    b[1] = char(x >> 8), b[2] = char(x & 0xFF);
    b[3] = char(y >> 8), b[4] = char(y & 0xFF);
}

// Exiv2 keeps the image tags of an existing TIFF, resolution among them, so the entries the
// encoder wrote into IFD0 are overwritten in place. Nothing is added or moved; a file
// without all three entries keeps its own.
void patchTiffDpi(QByteArray& data, std::pair<double, double> dpi) {
    if (!data.startsWith(QByteArray("II*\0", 4)) && !data.startsWith(QByteArray("MM\0*", 4)))
        return;
    const bool little = data[0] == 'I';
    auto* bytes = reinterpret_cast<uchar*>(data.data());
    const qint64 size = data.size();
    const auto get = [&](qint64 at, int n) {
        quint32 v = 0;
        for (int i = 0; i < n; ++i) v |= quint32(bytes[at + i]) << (8 * (little ? i : n - 1 - i));
        return v;
    };
    const auto put = [&](qint64 at, int n, quint32 v) {
        for (int i = 0; i < n; ++i) bytes[at + i] = uchar(v >> (8 * (little ? i : n - 1 - i)));
    };
    if (size < 8) return;
    const qint64 ifd = get(4, 4);
    if (ifd + 2 > size) return;
    qint64 xAt = -1, yAt = -1, unitAt = -1;
    for (qint64 i = 0, n = get(ifd, 2); i < n && ifd + 2 + 12 * (i + 1) <= size; ++i) {
        const qint64 entry = ifd + 2 + 12 * i;
        const quint32 tag = get(entry, 2), type = get(entry + 2, 2), count = get(entry + 4, 4);
        if (count != 1) continue;
        if ((tag == 0x011A || tag == 0x011B) && type == 5 && get(entry + 8, 4) + 8ll <= size)
            (tag == 0x011A ? xAt : yAt) = get(entry + 8, 4);
        if (tag == 0x0128 && type == 3) unitAt = entry + 8;
    }
    const auto x = rationalFor(dpi.first, 4294967295.0), y = rationalFor(dpi.second, 4294967295.0);
    if (xAt < 0 || yAt < 0 || unitAt < 0 || !x || !y) return;
    put(xAt, 4, quint32(x->first)), put(xAt + 4, 4, quint32(x->second));
    put(yAt, 4, quint32(y->first)), put(yAt + 4, 4, quint32(y->second));
    put(unitAt, 2, 2);
}

void applyMetadata(Exiv2::Image& image, const Metadata& metadata) {
    Exiv2::ExifData& exif = image.exifData();
    for (const Group& g : Groups) {
        const QVariantMap dictionary = metadata.value(g.dictionary).toMap();
        for (auto it = dictionary.begin(); it != dictionary.end(); ++it) {
            const std::string tag = it.key().toStdString();
            if (isStructural(g.exivGroup, tag)) continue;
            setExif(exif, std::string("Exif.") + g.exivGroup + "." + tag, it.value());
        }
    }
    // The dimensions tags describe the new pixels, not the ones the dictionary came from.
    const QVariantMap exifDict = metadata.value(ExifDictionary).toMap();
    if (exifDict.contains(QStringLiteral("PixelXDimension")) && image.pixelWidth() > 0)
        setExif(exif, "Exif.Photo.PixelXDimension", image.pixelWidth());
    if (exifDict.contains(QStringLiteral("PixelYDimension")) && image.pixelHeight() > 0)
        setExif(exif, "Exif.Photo.PixelYDimension", image.pixelHeight());
    if (metadata.contains(OrientationKey))
        setExif(exif, "Exif.Image.Orientation", metadata.value(OrientationKey));
    if (const auto dpi = topLevelDpi(metadata)) {
        setExif(exif, "Exif.Image.XResolution", dpi->first);
        setExif(exif, "Exif.Image.YResolution", dpi->second);
        setExif(exif, "Exif.Image.ResolutionUnit", 2);
    }

    const QVariantMap iptcDict = metadata.value(IptcDictionary).toMap();
    Exiv2::IptcData& iptc = image.iptcData();
    for (auto it = iptcDict.begin(); it != iptcDict.end(); ++it)
        setIptc(iptc, it.key(), it.value());
    // IPTC text is written as UTF-8; say so when it matters.
    bool ascii = true;
    for (const QVariant& value : iptcDict)
        for (const QVariant& item : itemsOf(value)) ascii = ascii && isAscii(item.toString());
    if (!ascii) iptc["Iptc.Envelope.CharacterSet"] = std::string("\x1b%G");
}

bool hasMagic(const QByteArray& data) {
    return data.startsWith("\xFF\xD8") || data.startsWith(QByteArray("II*\0", 4)) ||
           data.startsWith(QByteArray("MM\0*", 4));
}

}  // namespace

QByteArray combineDataAndMetadata(const QByteArray& encoded, const Metadata& metadata) {
    if (metadata.isEmpty() || !hasMagic(encoded)) return encoded;
    const std::optional<QByteArray> combined = guarded([&] {
        auto image = Exiv2::ImageFactory::open(
            reinterpret_cast<const Exiv2::byte*>(encoded.constData()), long(encoded.size()));
        if (!image.get() || (image->imageType() != Exiv2::ImageType::jpeg &&
                             image->imageType() != Exiv2::ImageType::tiff))
            throw std::runtime_error("not a JPEG or TIFF");
        image->readMetadata();
        applyMetadata(*image, metadata);
        image->writeMetadata();
        Exiv2::BasicIo& io = image->io();
        if (io.open() != 0 || io.seek(0, Exiv2::BasicIo::beg) != 0)
            throw std::runtime_error("cannot reread");
        const Exiv2::DataBuf buffer = io.read(io.size());
        io.close();
        return QByteArray(reinterpret_cast<const char*>(buffer.pData_), qsizetype(buffer.size_));
    });
    if (!combined || !hasMagic(*combined)) return encoded;
    QByteArray result = *combined;
    if (const auto dpi = resolutionOf(metadata)) {
        patchJfifDpi(result, *dpi);
        patchTiffDpi(result, *dpi);
    }
    return result;
}

void writeMetadataToFile(const Metadata& metadata, const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return;
    const QByteArray original = file.readAll();
    file.close();
    const QByteArray combined = combineDataAndMetadata(original, metadata);
    if (combined == original) return;
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly)) return;
    if (out.write(combined) != combined.size()) {
        out.cancelWriting();
        return;
    }
    out.commit();
}

}  // namespace marigold::metadata
