#include <cstdio>
#include <filesystem>
#include <system_error>

#include "jpeg/ExifTransplant.h"
#include "jpeg/JpegContext.h"
#include "jpeg/OrientationTag.h"

namespace marigold {

void JpegContext::_recordFileFacts(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        errFatal("No such file");
        return;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    _info.fileSize = error ? 0 : size;
    const fs::file_time_type time = fs::last_write_time(path, error);
    if (!error) {
        _info.fileDateTime = std::chrono::system_clock::to_time_t(
            std::chrono::time_point_cast<std::chrono::system_clock::duration>(
                std::chrono::file_clock::to_sys(time)));
    }
}

bool JpegContext::parseFile(const std::string& path) {
    _currentFile = path;
    resetJpgfile();
    _info = ImageInfo{};
    _info.flashUsed = -1;
    _info.meteringMode = -1;
    _recordFileFacts(path);
    return readJpegFile(path, READ_EXIF);
}

void JpegContext::_startTransplant() {
    resetJpgfile();
    _info = ImageInfo{};
    _info.flashUsed = -1;
    _info.meteringMode = -1;
}

void JpegContext::_keepExifWithoutThumbnailPointers() {
    discardAllButExif();
    // The thumbnail itself is no EXIF block: parsing it changes nothing, and the pointer
    // entries go from the directory remembered from the source's block, which keeps its
    // length with the thumbnail bytes left in it unreferenced.
    if (_info.thumbnailLocation) {
        removeThumbnail({_info.thumbnailLocation, _info.thumbnailSize});
    }
}

bool JpegContext::copyExif(const std::string& source, const std::string& target) {
    _currentFile = target;
    _startTransplant();
    _recordFileFacts(source);
    _info.fileName = source.substr(0, ImageInfo::kMaxFileName);
    if (!readJpegFile(source, READ_EXIF)) return false;
    _keepExifWithoutThumbnailPointers();
    if (!readJpegFile(target, READ_IMAGE)) return false;

    // The target is moved aside rather than overwritten, and put back if the new file
    // cannot be written, so a failure never costs the encoder's file.
    const std::string backup = target + ".t";
    std::remove(backup.c_str());
    bool ok = std::rename(target.c_str(), backup.c_str()) == 0;
    if (ok) {
        ok = writeJpegFile(target);
        if (ok) {
            std::remove(backup.c_str());
        } else {
            std::rename(backup.c_str(), target.c_str());
        }
    }
    discardData();
    return ok;
}

std::optional<std::vector<std::uint8_t>> JpegContext::copyExif(
    std::span<const std::uint8_t> source, std::span<const std::uint8_t> target) {
    _startTransplant();
    if (!readJpegBuffer(source, READ_EXIF, "source")) return std::nullopt;
    _keepExifWithoutThumbnailPointers();
    if (!readJpegBuffer(target, READ_IMAGE, "target")) return std::nullopt;
    std::vector<std::uint8_t> bytes = writeJpegBuffer();
    discardData();
    return bytes;
}

std::optional<std::vector<std::uint8_t>> transplantExifUpright(std::span<const std::uint8_t> source,
                                                               std::span<const std::uint8_t> target) {
    if (source.size() < 2 || source[0] != 0xFF || source[1] != 0xD8) return std::nullopt;
    JpegContext context;
    std::optional<std::vector<std::uint8_t>> bytes = context.copyExif(source, target);
    if (bytes) setOrientation(*bytes, 1);
    return bytes;
}

}  // namespace marigold
