#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

#include "jpeg/ExifBytes.h"
#include "jpeg/JpegContext.h"

namespace marigold {

namespace {

enum : unsigned {
    TAG_MAKE = 0x010F,
    TAG_MODEL = 0x0110,
    TAG_ORIENTATION = 0x0112,
    TAG_THUMBNAIL_OFFSET = 0x0201,
    TAG_THUMBNAIL_LENGTH = 0x0202,
    TAG_EXPOSURETIME = 0x829A,
    TAG_FNUMBER = 0x829D,
    TAG_EXIF_OFFSET = 0x8769,
    TAG_EXPOSURE_PROGRAM = 0x8822,
    TAG_ISO_EQUIVALENT = 0x8827,
    TAG_DATETIME_ORIGINAL = 0x9003,
    TAG_SHUTTERSPEED = 0x9201,
    TAG_APERTURE = 0x9202,
    TAG_EXPOSURE_BIAS = 0x9204,
    TAG_SUBJECT_DISTANCE = 0x9206,
    TAG_METERING_MODE = 0x9207,
    TAG_LIGHT_SOURCE = 0x9208,
    TAG_FLASH = 0x9209,
    TAG_FOCALLENGTH = 0x920A,
    TAG_USERCOMMENT = 0x9286,
    TAG_EXIF_IMAGEWIDTH = 0xA002,
    TAG_EXIF_IMAGELENGTH = 0xA003,
    TAG_INTEROP_OFFSET = 0xA005,
    TAG_FOCALPLANEXRES = 0xA20E,
    TAG_FOCALPLANEUNITS = 0xA210,
};

enum {
    FMT_BYTE = 1,
    FMT_STRING,
    FMT_USHORT,
    FMT_ULONG,
    FMT_URATIONAL,
    FMT_SBYTE,
    FMT_UNDEFINED,
    FMT_SSHORT,
    FMT_SLONG,
    FMT_SRATIONAL,
    FMT_SINGLE,
    FMT_DOUBLE
};

constexpr unsigned kBytesPerFormat[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
constexpr int kMaxNesting = 4;
// Real blocks have four or five directories. The budget keeps a block whose entries all
// link back into themselves from being walked an exponential number of times.
constexpr int kMaxDirectories = 32;
// A next-directory link this little past the end is what older tools left when they cut
// a thumbnail off; it is tolerated.
constexpr std::uint64_t kCutThumbnailSlack = 20;
constexpr double kLn2 = 0.69314718055994530942;

// Conversions that stay defined for every value a hostile file can hold.
int toInt(double value) {
    if (std::isnan(value)) return 0;
    if (value >= double(INT_MAX)) return INT_MAX;
    if (value <= double(INT_MIN)) return INT_MIN;
    return int(value);
}

std::uint32_t toUint32(double value) {
    if (std::isnan(value) || value <= 0) return 0;
    if (value >= 4294967295.0) return UINT32_MAX;
    return std::uint32_t(value);
}

float toFloat(double value) {
    if (std::isnan(value)) return 0;
    return float(std::clamp(value, double(-FLT_MAX), double(FLT_MAX)));
}

std::string text(std::span<const std::uint8_t> value) {
    const auto end = std::find(value.begin(), value.end(), std::uint8_t(0));
    return std::string(value.begin(), end);
}

// The user comment fills the record's comment only when no COM segment did: its first
// eight bytes name the character code, and only ASCII (or an unstated code) is text here.
std::string userComment(std::span<const std::uint8_t> value) {
    static constexpr std::uint8_t kAscii[8] = {'A', 'S', 'C', 'I', 'I', 0, 0, 0};
    static constexpr std::uint8_t kUnstated[8] = {};
    if (value.size() <= 8) return {};
    if (!std::equal(kAscii, kAscii + 8, value.begin()) &&
        !std::equal(kUnstated, kUnstated + 8, value.begin())) {
        return {};
    }
    std::string comment;
    for (const std::uint8_t c : value.subspan(8)) {
        if (c == 0 || comment.size() == ImageInfo::kMaxComment) break;
        comment += (c > 31 || c == '\n' || c == '\t') ? char(c) : '?';
    }
    comment.erase(comment.find_last_not_of(' ') + 1);
    return comment;
}

// Millimetres per focal-plane resolution unit; 0 for an unknown code.
double millimetresPerUnit(int code) {
    switch (code) {
        case 1:  // no unit: taken as inches, as cameras that write it mean
        case 2:
            return 25.4;
        case 3:
            return 10;
        case 4:
            return 1;
        case 5:
            return 0.001;
        default:
            return 0;
    }
}

}  // namespace

double JpegContext::_number(std::span<const std::uint8_t> value, int format) const {
    if (format < FMT_BYTE || format > FMT_DOUBLE || value.size() < kBytesPerFormat[format]) {
        return 0;
    }
    const std::uint8_t* p = value.data();
    const bool m = _motorola;
    switch (format) {
        case FMT_BYTE:
        case FMT_UNDEFINED:
            return p[0];
        case FMT_SBYTE:
            return std::int8_t(p[0]);
        case FMT_USHORT:
            return get16(p, m);
        case FMT_SSHORT:
            return std::int16_t(get16(p, m));
        case FMT_ULONG:
            return get32(p, m);
        case FMT_SLONG:
            return std::int32_t(get32(p, m));
        case FMT_URATIONAL:
        case FMT_SRATIONAL: {
            const std::uint32_t num = get32(p, m), den = get32(p + 4, m);
            if (den == 0) return 0;
            if (format == FMT_URATIONAL) return double(num) / double(den);
            return double(std::int32_t(num)) / double(std::int32_t(den));
        }
        case FMT_SINGLE: {
            const std::uint32_t bits = get32(p, m);
            float f;
            std::memcpy(&f, &bits, sizeof f);
            return f;
        }
        case FMT_DOUBLE: {
            const std::uint64_t high = get32(p + (m ? 0 : 4), m), low = get32(p + (m ? 4 : 0), m);
            const std::uint64_t bits = high << 32 | low;
            double d;
            std::memcpy(&d, &bits, sizeof d);
            return d;
        }
        default:
            return 0;  // ASCII text is no number
    }
}

void JpegContext::processExif(std::span<std::uint8_t> block) {
    _focalPlaneXRes = 0;
    _focalPlaneUnitCode = 0;
    _exifImageWidth = 0;
    _info.orientationLocation = nullptr;
    _info.orientationFormat = 0;

    // Anything else leaves the remembered thumbnail directory alone: the transplant relies
    // on that when it hands over the thumbnail's bytes.
    static constexpr std::uint8_t kExifHeader[6] = {'E', 'x', 'i', 'f', 0, 0};
    if (block.size() < 8 || !std::equal(kExifHeader, kExifHeader + 6, block.begin() + 2)) return;

    if (block.size() >= 10 && block[8] == 'I' && block[9] == 'I') {
        _motorola = false;
    } else if (block.size() >= 10 && block[8] == 'M' && block[9] == 'M') {
        _motorola = true;
    } else {
        errNonfatal("Invalid Exif alignment marker.", 0, 0);
        return;
    }
    if (block.size() < 16 || get16(&block[10], _motorola) != 0x2A) {
        errNonfatal("Invalid Exif start (1)", 0, 0);
        return;
    }
    const std::uint32_t firstOffset = get32(&block[12], _motorola);
    if (firstOffset < 8 || firstOffset > 16) {
        errNonfatal("Suspicious offset of first IFD value", 0, 0);
    }

    _tiff = block.subspan(8);
    _thumbnailDirectory.reset();
    _thumbnailOffset.reset();
    _thumbnailSize.reset();
    _lastByteReferred = 0;
    _directoryBudget = kMaxDirectories;
    _budgetReported = false;
    _processExifDir(firstOffset, 0);

    if (_thumbnailOffset && _thumbnailSize &&
        fits(_tiff.size(), *_thumbnailOffset, *_thumbnailSize)) {
        _info.thumbnailOffset = *_thumbnailOffset;
        _info.thumbnailSize = *_thumbnailSize;
        _info.thumbnailLocation = _tiff.data() + *_thumbnailOffset;
    }

    const double unit = millimetresPerUnit(_focalPlaneUnitCode);
    if (_exifImageWidth != 0 && _focalPlaneXRes != 0 && unit != 0) {
        _info.ccdWidth = toFloat(_exifImageWidth * unit / _focalPlaneXRes);
    }
}

void JpegContext::_processExifDir(std::uint64_t dirStart, int nestingLevel) {
    if (nestingLevel > kMaxNesting) {
        errNonfatal("Maximum directory nesting exceeded (corrupt exif header)", 0, 0);
        return;
    }
    if (_directoryBudget == 0) {
        if (!_budgetReported) {
            errNonfatal("Maximum directory nesting exceeded (corrupt exif header)", 0, 0);
        }
        _budgetReported = true;
        return;
    }
    --_directoryBudget;

    const std::size_t size = _tiff.size();
    if (!fits(size, dirStart, 2)) {
        errNonfatal("Illegally sized directory", 0, 0);
        return;
    }
    const unsigned count = get16(_tiff.data() + dirStart, _motorola);
    const std::uint64_t entriesEnd = dirStart + 2 + 12ull * count;
    if (entriesEnd > size) {
        errNonfatal("Illegally sized directory", 0, 0);
        return;
    }
    _lastByteReferred = std::max<std::size_t>(_lastByteReferred, 8 + entriesEnd);

    for (unsigned i = 0; i < count; ++i) {
        const std::uint64_t entry = dirStart + 2 + 12ull * i;
        const std::uint8_t* e = _tiff.data() + entry;
        const unsigned tag = get16(e, _motorola);
        const int format = get16(e + 2, _motorola);
        const std::uint32_t components = get32(e + 4, _motorola);
        if (format < FMT_BYTE || format > FMT_DOUBLE) {
            errNonfatal("Illegal number format %d for tag %04x", format, int(tag));
            continue;
        }
        const std::uint64_t byteCount = std::uint64_t(components) * kBytesPerFormat[format];
        std::uint64_t valueAt = entry + 8;
        if (byteCount > 4) {
            valueAt = get32(e + 8, _motorola);
            if (!fits(size, valueAt, byteCount)) {
                errNonfatal("Illegal value pointer for tag %04x", int(tag), 0);
                continue;
            }
        }
        _lastByteReferred = std::max<std::size_t>(_lastByteReferred, 8 + valueAt + byteCount);
        _processTag(tag, format, _tiff.subspan(valueAt, byteCount), dirStart, nestingLevel);
    }

    // The link to the next directory, when the block still holds it: that is where the
    // thumbnail directory hangs.
    if (!fits(size, entriesEnd, 4)) return;
    const std::uint32_t link = get32(_tiff.data() + entriesEnd, _motorola);
    if (link == 0) return;
    if (link < size) {
        _processExifDir(link, nestingLevel + 1);
    } else if (link - size >= kCutThumbnailSlack) {
        errNonfatal("Illegal subdirectory link", 0, 0);
    }
}

void JpegContext::_processTag(unsigned tag, int format, std::span<std::uint8_t> value,
                              std::uint64_t dirStart, int nestingLevel) {
    const double number = _number(value, format);
    switch (tag) {
        case TAG_MAKE:
            _info.cameraMake = text(value);
            break;
        case TAG_MODEL:
            _info.cameraModel = text(value);
            break;
        case TAG_DATETIME_ORIGINAL:
            _info.dateTime = text(value);
            break;
        case TAG_ORIENTATION: {
            _info.orientationLocation = value.data();
            _info.orientationFormat = format;
            const int orientation = toInt(number);
            _info.orientation = orientation;
            if (orientation < 1 || orientation > 8) {
                errNonfatal("Undefined rotation value %d", orientation, 0);
                _info.orientation = 0;
            }
            break;
        }
        case TAG_EXPOSURETIME:
            _info.exposureTime = toFloat(number);
            break;
        case TAG_FNUMBER:
            _info.apertureFNumber = toFloat(number);
            break;
        case TAG_SHUTTERSPEED:
            // APEX: time = 2^-value seconds; only when the time itself was not given.
            if (_info.exposureTime == 0) _info.exposureTime = toFloat(std::exp(-number * kLn2));
            break;
        case TAG_APERTURE:
            // APEX: f-number = 2^(value / 2).
            if (_info.apertureFNumber == 0) {
                _info.apertureFNumber = toFloat(std::exp(number * kLn2 * 0.5));
            }
            break;
        case TAG_EXPOSURE_BIAS:
            _info.exposureBias = toFloat(number);
            break;
        case TAG_SUBJECT_DISTANCE:
            _info.distance = toFloat(number);
            break;
        case TAG_FOCALLENGTH:
            _info.focalLength = toFloat(number);
            break;
        case TAG_FLASH:
            _info.flashUsed = (toInt(number) & 7) ? 1 : 0;
            break;
        case TAG_METERING_MODE:
            _info.meteringMode = toInt(number);
            break;
        case TAG_LIGHT_SOURCE:
            _info.lightSource = toInt(number);
            break;
        case TAG_EXPOSURE_PROGRAM:
            _info.exposureProgram = toInt(number);
            break;
        case TAG_ISO_EQUIVALENT: {
            // Some cameras store a code below 50 rather than the speed.
            const std::int64_t iso = toInt(number);
            _info.isoEquivalent = iso < 50 ? toInt(double(iso * 200)) : int(iso);
            break;
        }
        case TAG_EXIF_IMAGEWIDTH:
        case TAG_EXIF_IMAGELENGTH:
            _exifImageWidth = std::max(_exifImageWidth, toInt(number));
            break;
        case TAG_FOCALPLANEXRES:
            _focalPlaneXRes = number;
            break;
        case TAG_FOCALPLANEUNITS:
            _focalPlaneUnitCode = toInt(number);
            break;
        case TAG_USERCOMMENT:
            if (_info.comments.empty()) _info.comments = userComment(value);
            break;
        case TAG_EXIF_OFFSET:
        case TAG_INTEROP_OFFSET: {
            const std::uint32_t offset = toUint32(number);
            if (offset >= _tiff.size()) {
                errNonfatal("Illegal exif or interop ofset directory link", 0, 0);
            } else {
                _processExifDir(offset, nestingLevel + 1);
            }
            break;
        }
        case TAG_THUMBNAIL_OFFSET:
            _thumbnailOffset = toUint32(number);
            _thumbnailDirectory = ThumbnailDirectory{_tiff, std::size_t(dirStart), _motorola};
            break;
        case TAG_THUMBNAIL_LENGTH:
            _thumbnailSize = toUint32(number);
            _thumbnailDirectory = ThumbnailDirectory{_tiff, std::size_t(dirStart), _motorola};
            break;
        default:
            break;
    }
}

std::size_t JpegContext::removeThumbnail(std::span<std::uint8_t> block) {
    processExif(block);
    if (!_thumbnailDirectory) return _lastByteReferred;

    const ThumbnailDirectory& dir = *_thumbnailDirectory;
    std::uint8_t* tiff = dir.tiff.data();
    const std::size_t size = dir.tiff.size();
    if (!fits(size, dir.offset, 2)) return _lastByteReferred;
    unsigned count = get16(tiff + dir.offset, dir.motorola);
    const std::uint64_t first = dir.offset + 2;
    for (unsigned i = 0; i < count;) {
        const std::uint64_t entry = first + 12ull * i;
        if (!fits(size, entry, 12)) break;
        const unsigned tag = get16(tiff + entry, dir.motorola);
        if (tag != TAG_THUMBNAIL_OFFSET && tag != TAG_THUMBNAIL_LENGTH) {
            ++i;
            continue;
        }
        // Later entries and the next-directory link move down over this one.
        const std::uint64_t end = std::min<std::uint64_t>(first + 12ull * count + 4, size);
        std::memmove(tiff + entry, tiff + entry + 12, std::size_t(end - entry - 12));
        --count;
    }
    put16(tiff + dir.offset, std::uint16_t(count), dir.motorola);
    return _lastByteReferred;
}

}  // namespace marigold
