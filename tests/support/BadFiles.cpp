#include "support/BadFiles.h"

#include <QDir>
#include <QFile>

#include "support/TestImages.h"

namespace marigold::test {

namespace {

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

quint32 crc32(const QByteArray& bytes) {
    quint32 crc = 0xffffffffu;
    for (char c : bytes) {
        crc ^= quint8(c);
        for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray bigEndian(quint32 v) {
    return QByteArray(1, char(v >> 24)) + char(v >> 16) + char(v >> 8) + char(v);
}

QByteArray pngChunk(const QByteArray& type, const QByteArray& data) {
    return bigEndian(quint32(data.size())) + type + data + bigEndian(crc32(type + data));
}

// A well-formed PNG signature and header claiming a huge size, with a token of image data.
QByteArray hugePng() {
    QByteArray ihdr = bigEndian(100000) + bigEndian(100000);
    ihdr += char(8);  // bit depth
    ihdr += char(6);  // RGBA
    ihdr += QByteArray(3, '\0');
    const QByteArray idat = QByteArray::fromHex("789c636000000000010001");
    return QByteArray::fromHex("89504e470d0a1a0a") + pngChunk("IHDR", ihdr) +
           pngChunk("IDAT", idat) + pngChunk("IEND", {});
}

}  // namespace

std::vector<BadFile> badImageFiles(const QString& dirPath) {
    const QDir dir(dirPath);
    std::vector<BadFile> files;

    const QString text = dir.filePath(QStringLiteral("notes.jpg"));
    write(text, "These are not the pixels you are looking for.\n");
    files.push_back({"text named .jpg", text});

    const QString whole = writeJpeg(photoLikeImage(640, 480), dirPath, QStringLiteral("whole.jpg"));
    QFile wholeFile(whole);
    wholeFile.open(QIODevice::ReadOnly);
    const QByteArray jpeg = wholeFile.readAll();
    const QString truncated = dir.filePath(QStringLiteral("truncated.jpg"));
    write(truncated, jpeg.left(jpeg.size() / 2));
    files.push_back({"truncated JPEG", truncated, true});

    const QString empty = dir.filePath(QStringLiteral("empty.png"));
    write(empty, {});
    files.push_back({"empty file", empty});

    const QString huge = dir.filePath(QStringLiteral("huge.png"));
    write(huge, hugePng());
    files.push_back({"100000 x 100000 header", huge});

    const QString folder = dir.filePath(QStringLiteral("folder.png"));
    dir.mkpath(folder);
    files.push_back({"folder", folder});

    files.push_back({"missing file", dir.filePath(QStringLiteral("missing.jpg"))});
    return files;
}

}  // namespace marigold::test
