#pragma once

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "jpeg/JpegContext.h"

// Shared by the JPEG section, EXIF and orientation tests: real files made by ImageMagick
// and tagged by exiftool, a JPEG layout read independently of the code under test, and
// the context's messages captured.
namespace marigold::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline void writeBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

inline QByteArray runToolBytes(const QString& program, const QStringList& args) {
    QProcess process;
    process.start(program, args);
    const bool finished = process.waitForFinished(60000);
    EXPECT_TRUE(finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        << qPrintable(program) << " " << qPrintable(args.join(' ')) << ": "
        << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

inline QString runTool(const QString& program, const QStringList& args) {
    return QString::fromUtf8(runToolBytes(program, args));
}

inline QString exiftool(const QStringList& args) {
    return runTool("exiftool", args);
}

// Tag values as exiftool reads them: numbers unconverted, keys "Group:Tag".
inline QJsonObject exiftoolJson(const std::string& path) {
    const QString json = exiftool({"-j", "-n", "-a", "-G1", QString::fromStdString(path)});
    return QJsonDocument::fromJson(json.toUtf8()).array().at(0).toObject();
}

// A small colour JPEG with ImageMagick's JFIF header and no EXIF.
inline std::string makeJpeg(const QString& dir, const QString& name, const QString& size = "64x48",
                            const QString& picture = "gradient:red-blue") {
    const QString path = dir + "/" + name;
    runTool("convert", {"-size", size, picture, "-quality", "90", path});
    return path.toStdString();
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

// Inserts segments right after the start-of-image marker.
inline Bytes withSegmentsAfterSoi(const Bytes& file, const Bytes& segments) {
    Bytes out(file.begin(), file.begin() + 2);
    out.insert(out.end(), segments.begin(), segments.end());
    out.insert(out.end(), file.begin() + 2, file.end());
    return out;
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
