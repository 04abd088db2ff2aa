#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jpeg/ImageInfo.h"

namespace marigold {

// Read modes, as bit flags.
enum JpegReadMode { READ_EXIF = 1, READ_IMAGE = 2 };

// One marker segment of a JPEG file, stored from its two length bytes on (the marker bytes
// are not stored), or the image data that follows the start of scan.
struct Section {
    static constexpr unsigned kImageData = 0x123;  // a pseudo-marker no file contains

    unsigned type = 0;
    std::vector<std::uint8_t> data;

    std::size_t size() const { return data.size(); }
};

class JpegByteSource;

// The JPEG section store, the EXIF block parser and the EXIF transplant, with all the state
// they share: the section table, the image information record and the parser's memory of
// the directory that holds the thumbnail pointers. Not reentrant; one operation at a time.
// Paths are byte strings in the file system's encoding.
class JpegContext {
public:
    static constexpr std::size_t kMaxReadSections = 20;

    JpegContext();
    // The record and the parser point into the table's buffers: a copy would share them.
    JpegContext(const JpegContext&) = delete;
    JpegContext& operator=(const JpegContext&) = delete;

    // Messages go to these streams; nullptr silences one.
    void setErrorStream(std::FILE* stream) { _err = stream; }
    void setOutputStream(std::FILE* stream) { _out = stream; }

    const std::vector<Section>& sections() const { return _sections; }
    const ImageInfo& imageInfo() const { return _info; }
    ImageInfo& imageInfo() { return _info; }

    // Empties the table without touching the information record.
    void resetJpgfile();
    // Empties the table and clears the information record.
    void discardData();

    // Reads a file into the table; on failure says so and discards everything.
    bool readJpegFile(const std::string& path, int mode);
    // The same for bytes in memory; `name` stands for the path in the message.
    bool readJpegBuffer(std::span<const std::uint8_t> bytes, int mode, const std::string& name);
    // The reader itself, appending to the table.
    bool readJpegSections(std::span<const std::uint8_t> bytes, int mode);

    // Leaves the table holding exactly the first APP1 and the first COM section.
    void discardAllButExif();
    // Removes the thumbnail pointer entries from the remembered directory (after parsing
    // `block` if it is an EXIF block); the block keeps its length. Returns the length to
    // which the block could be cut.
    std::size_t removeThumbnail(std::span<std::uint8_t> block);

    // Puts a file together from the table.
    std::vector<std::uint8_t> writeJpegBuffer();

    // The file `target` carrying the EXIF block and comment of the file `source`, or nothing
    // on failure.
    std::optional<std::vector<std::uint8_t>> copyExif(std::span<const std::uint8_t> source,
                                                      std::span<const std::uint8_t> target);

    // Fills the information record from a file; the sections stay until discardData().
    bool parseFile(const std::string& path);

    void errFatal(const char* message);
    void errNonfatal(const char* format, int a, int b);

    // Parses one APP1 segment's data (from its length bytes on) into the record. The block
    // must outlive the record's pointers into it; removeThumbnail may later write into it.
    void processExif(std::span<std::uint8_t> block);

private:
    struct ThumbnailDirectory {
        std::span<std::uint8_t> tiff;  // the block's TIFF structure
        std::size_t offset = 0;
        bool motorola = false;
    };

    bool _readSections(JpegByteSource& in, int mode);
    bool _readJpeg(JpegByteSource& in, int mode, const std::string& name);
    void _dropLastSection();
    void _forgetPointersInto(const std::vector<std::uint8_t>& freed);
    // Empties the table and the record; flash and metering mode start as unknown.
    void _startAfresh();
    void _recordFileFacts(const std::string& path);

    void _processExifDir(std::uint64_t dirStart, int nestingLevel);
    void _processTag(unsigned tag, int format, std::span<std::uint8_t> value,
                     std::uint64_t dirStart, int nestingLevel);
    double _number(std::span<const std::uint8_t> value, int format) const;

    std::FILE* _err;
    std::FILE* _out;

    std::vector<Section> _sections;
    bool _haveAll = false;
    std::optional<std::string> _currentFile;
    ImageInfo _info;

    // EXIF parser state.
    std::span<std::uint8_t> _tiff;
    bool _motorola = false;
    std::optional<ThumbnailDirectory> _thumbnailDirectory;
    std::size_t _lastByteReferred = 0;
    int _directoryBudget = 0;
    bool _budgetReported = false;
    std::optional<std::uint32_t> _thumbnailOffset;
    std::optional<std::uint32_t> _thumbnailSize;
    double _focalPlaneXRes = 0;
    int _focalPlaneUnitCode = 0;
    int _exifImageWidth = 0;
};

}  // namespace marigold
