#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/Image.h"

// Files read and written whole, and the outside tools (exiftool, ImageMagick) that make
// test pictures and check results independently of the code under test.
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

// Empty when the file cannot be read.
inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Creates or replaces the file; a failure fails the test.
inline void writeFile(const QString& path, const QByteArray& bytes = {}) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    file.write(bytes);
}

// The tool's standard output; anything but a clean exit fails the test.
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

inline QString exiftool(const QStringList& args) { return runTool("exiftool", args); }

// Writes tags into the file in place, as a camera or another program would have left them.
inline void exiftoolTag(const QString& path, const QStringList& tags) {
    exiftool(QStringList{"-q", "-overwrite_original"} + tags + QStringList{path});
}
inline void exiftoolTag(const std::string& path, const QStringList& tags) {
    exiftoolTag(QString::fromStdString(path), tags);
}

// Tag values as exiftool reads them: numbers unconverted, keys "Group:Tag".
inline QJsonObject exiftoolJson(const QString& path) {
    const QString json = exiftool({"-j", "-n", "-a", "-G1", path});
    return QJsonDocument::fromJson(json.toUtf8()).array().at(0).toObject();
}
inline QJsonObject exiftoolJson(const std::string& path) {
    return exiftoolJson(QString::fromStdString(path));
}

// exiftool's warnings and errors about a file, without their labels.
inline QStringList exiftoolProblems(const std::string& path) {
    QStringList found;
    const QString report =
        exiftool({"-validate", "-warning", "-error", "-a", QString::fromStdString(path)});
    for (const QString& line : report.split('\n')) {
        if (line.startsWith("Warning") || line.startsWith("Error")) found << line.section(": ", 1);
    }
    return found;
}

// A small colour JPEG made by ImageMagick (so with a JFIF header and no EXIF), then given
// `tags` by exiftool when there are any.
inline std::string makeJpeg(const QString& dir, const QString& name, const QStringList& tags = {},
                            const QString& size = "64x48",
                            const QString& picture = "gradient:red-blue") {
    const QString path = dir + "/" + name;
    runTool("convert", {"-size", size, picture, "-quality", "90", path});
    if (!tags.isEmpty()) exiftoolTag(path, tags);
    return path.toStdString();
}

// A file's bytes decoded by libvips, kept in memory.
inline vips::VImage vipsDecode(const QByteArray& bytes) {
    return vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "")
        .copy_memory();
}

}  // namespace marigold::test
