#pragma once

#include <gtest/gtest.h>

#include <cstdio>

#include "jpeg/JpegContext.h"
#include "support/ToolsAndFiles.h"

// Shared by the JPEG section, EXIF and orientation tests: segments built by hand, a JPEG
// layout read independently of the code under test, and the context's messages captured.
namespace marigold::test {

// The header the writer puts in when no APP0 or APP1 comes first: JFIF 1.1 at 300 dpi.
inline const Bytes kJfif300{0xFF, 0xE0, 0x00, 0x10, 'J',  'F',  'I',  'F',  0x00,
                            0x01, 0x01, 0x01, 0x01, 0x2C, 0x01, 0x2C, 0x00, 0x00};

// The exiftool argument that gives a file a 16 x 12 EXIF thumbnail, made in `dir`.
inline QString thumbnailTag(const QString& dir) {
    return QString::fromStdString("-ThumbnailImage<=" + makeJpeg(dir, "thumb.jpg", {}, "16x12"));
}

inline Bytes segment(std::uint8_t marker, const Bytes& payload) {
    const std::size_t length = payload.size() + 2;
    Bytes s{0xFF, marker, std::uint8_t(length >> 8), std::uint8_t(length & 0xFF)};
    s.insert(s.end(), payload.begin(), payload.end());
    return s;
}

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A TIFF structure written by hand in either byte order, for blocks no tool would write.
struct Tiff {
    bool mm;

    Bytes u16(std::uint16_t v) const {
        return mm ? Bytes{std::uint8_t(v >> 8), std::uint8_t(v)}
                  : Bytes{std::uint8_t(v), std::uint8_t(v >> 8)};
    }
    Bytes u32(std::uint32_t v) const {
        return mm ? u16(std::uint16_t(v >> 16)) + u16(std::uint16_t(v))
                  : u16(std::uint16_t(v)) + u16(std::uint16_t(v >> 16));
    }
    Bytes header(std::uint32_t firstOffset = 8) const {
        return (mm ? Bytes{'M', 'M'} : Bytes{'I', 'I'}) + u16(0x2A) + u32(firstOffset);
    }
    Bytes entry(std::uint16_t tag, std::uint16_t format, std::uint32_t count,
                const Bytes& field) const {
        return u16(tag) + u16(format) + u32(count) + field;
    }
    Bytes shortEntry(std::uint16_t tag, std::uint16_t v) const {
        return entry(tag, 3, 1, u16(v) + Bytes{0, 0});
    }
    Bytes longEntry(std::uint16_t tag, std::uint32_t v) const { return entry(tag, 4, 1, u32(v)); }
    Bytes makeEntry() const { return entry(0x010F, 2, 3, Bytes{'a', 'b', 0, 0}); }
    Bytes ifd(const std::vector<Bytes>& entries, std::uint32_t next = 0) const {
        Bytes out = u16(std::uint16_t(entries.size()));
        for (const Bytes& e : entries) out = out + e;
        return out + u32(next);
    }
};

// The APP1 segment data: length bytes, "Exif\0\0", then the TIFF structure.
inline Bytes exifBlock(const Bytes& tiff) {
    const std::size_t length = tiff.size() + 8;
    return Bytes{std::uint8_t(length >> 8), std::uint8_t(length), 'E', 'x', 'i', 'f', 0, 0} + tiff;
}

// A file as a list of marker segments up to the start of scan, then the rest.
struct JpegLayout {
    struct Segment {
        std::uint8_t marker;
        Bytes data;  // from the two length bytes on
    };
    std::vector<Segment> segments;
    Bytes imageData;

    const Segment* first(std::uint8_t marker) const {
        for (const Segment& s : segments) {
            if (s.marker == marker) return &s;
        }
        return nullptr;
    }
};

inline JpegLayout scanJpeg(const Bytes& file) {
    JpegLayout layout;
    std::size_t at = 2;
    while (at + 4 <= file.size() && file[at] == 0xFF) {
        const std::size_t length = std::size_t(file[at + 2]) << 8 | file[at + 3];
        const std::uint8_t marker = file[at + 1];
        layout.segments.push_back(
            {marker, Bytes(file.begin() + at + 2, file.begin() + at + 2 + length)});
        at += 2 + length;
        if (marker == 0xDA) {
            layout.imageData.assign(file.begin() + at, file.end());
            break;
        }
    }
    return layout;
}

// Whatever the context says, kept apart for each stream.
class CapturedStreams {
public:
    explicit CapturedStreams(JpegContext& context) : _err(std::tmpfile()), _out(std::tmpfile()) {
        context.setErrorStream(_err);
        context.setOutputStream(_out);
    }
    ~CapturedStreams() {
        std::fclose(_err);
        std::fclose(_out);
    }
    std::string err() const { return contents(_err); }
    std::string out() const { return contents(_out); }

private:
    static std::string contents(std::FILE* file) {
        std::fflush(file);
        const long end = std::ftell(file);
        std::string text(std::size_t(end), '\0');
        std::rewind(file);
        text.resize(std::fread(text.data(), 1, text.size(), file));
        return text;
    }
    std::FILE* _err;
    std::FILE* _out;
};

}  // namespace marigold::test
