#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

#include "jpeg/JpegContext.h"

namespace marigold {

namespace {

enum : unsigned {
    M_SOF0 = 0xC0,
    M_SOF15 = 0xCF,
    M_DHT = 0xC4,
    M_JPG = 0xC8,
    M_DAC = 0xCC,
    M_SOS = 0xDA,
    M_EOI = 0xD9,
    M_APP0 = 0xE0,
    M_APP1 = 0xE1,
    M_COM = 0xFE,
};

constexpr int kMaxPadding = 7;
constexpr std::size_t kCommentEnd = 2 + ImageInfo::kMaxComment;

// C4, C8 and CC share the range of the start-of-frame codes but are tables, not frames.
bool isStartOfFrame(unsigned marker) {
    return marker >= M_SOF0 && marker <= M_SOF15 && marker != M_DHT && marker != M_JPG &&
           marker != M_DAC;
}

// Comment bytes as text: CR LF becomes LF; other control bytes but tab become "?".
std::string commentText(const std::vector<std::uint8_t>& data) {
    std::string text;
    const std::size_t end = std::min(data.size(), kCommentEnd);
    for (std::size_t i = 2; i < end; ++i) {
        const std::uint8_t c = data[i];
        if (c == '\r' && i + 1 < data.size() && data[i + 1] == '\n') continue;
        text += (c > 31 || c == '\n' || c == '\t') ? char(c) : '?';
    }
    return text;
}

bool within(const void* p, const std::vector<std::uint8_t>& buffer) {
    const std::less_equal<const void*> le;
    const std::less<const void*> lt;
    return !buffer.empty() && le(buffer.data(), p) && lt(p, buffer.data() + buffer.size());
}

}  // namespace

// Where the reader takes its bytes from: a file (so a large image need not be read to
// reach its header) or memory.
class JpegByteSource {
public:
    virtual ~JpegByteSource() = default;
    virtual int get() = 0;  // -1 at the end
    virtual std::size_t read(std::uint8_t* into, std::size_t count) = 0;
    // The bytes from here to the end, when that can be told.
    virtual std::optional<std::uint64_t> remaining() = 0;
};

namespace {

class FileSource : public JpegByteSource {
public:
    explicit FileSource(std::FILE* file) : _file(file) {}
    int get() override { return std::fgetc(_file); }
    std::size_t read(std::uint8_t* into, std::size_t count) override {
        return std::fread(into, 1, count, _file);
    }
    std::optional<std::uint64_t> remaining() override {
        const long here = std::ftell(_file);
        if (here < 0 || std::fseek(_file, 0, SEEK_END) != 0) return std::nullopt;
        const long end = std::ftell(_file);
        if (std::fseek(_file, here, SEEK_SET) != 0 || end < here) return std::nullopt;
        return std::uint64_t(end - here);
    }

private:
    std::FILE* _file;
};

class MemorySource : public JpegByteSource {
public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : _bytes(bytes) {}
    int get() override { return _at < _bytes.size() ? _bytes[_at++] : -1; }
    std::size_t read(std::uint8_t* into, std::size_t count) override {
        const std::size_t n = std::min(count, _bytes.size() - _at);
        if (n) std::memcpy(into, _bytes.data() + _at, n);
        _at += n;
        return n;
    }
    std::optional<std::uint64_t> remaining() override { return _bytes.size() - _at; }

private:
    std::span<const std::uint8_t> _bytes;
    std::size_t _at = 0;
};

}  // namespace

JpegContext::JpegContext() : _err(stderr), _out(stdout) {
    _sections.reserve(kMaxReadSections + 1);
}

void JpegContext::errFatal(const char* message) {
    if (!_err) return;
    std::fprintf(_err, "Error : %s\n", message);
    if (_currentFile) std::fprintf(_err, "in file '%s'\n", _currentFile->c_str());
}

void JpegContext::errNonfatal(const char* format, int a, int b) {
    if (!_err) return;
    std::fputs("Nonfatal Error : ", _err);
    if (_currentFile) std::fprintf(_err, "'%s' ", _currentFile->c_str());
    std::fprintf(_err, format, a, b);
    std::fputc('\n', _err);
}

void JpegContext::_forgetPointersInto(const std::vector<std::uint8_t>& freed) {
    // The record and the parser point into EXIF blocks; a freed block must not be reached.
    if (_thumbnailDirectory && within(_thumbnailDirectory->tiff.data(), freed)) {
        _thumbnailDirectory.reset();
    }
    if (within(_info.thumbnailLocation, freed)) _info.thumbnailLocation = nullptr;
    if (within(_info.orientationLocation, freed)) _info.orientationLocation = nullptr;
    if (within(_tiff.data(), freed)) _tiff = {};
}

void JpegContext::resetJpgfile() {
    for (const Section& s : _sections) _forgetPointersInto(s.data);
    _sections.clear();
    _haveAll = false;
}

void JpegContext::discardData() {
    resetJpgfile();
    _info = ImageInfo{};
}

void JpegContext::_dropLastSection() {
    _forgetPointersInto(_sections.back().data);
    _sections.pop_back();
}

bool JpegContext::readJpegSections(std::span<const std::uint8_t> bytes, int mode) {
    MemorySource in(bytes);
    return _readSections(in, mode);
}

bool JpegContext::_readSections(JpegByteSource& in, int mode) {
    if (in.get() != 0xFF || in.get() != 0xD8) return false;
    bool haveComment = false;
    for (;;) {
        if (_sections.size() > kMaxReadSections - 1) {
            errFatal("Too many sections in jpg file");
            return false;
        }
        int marker = 0;
        for (int padding = 0;;) {
            marker = in.get();
            if (marker != 0xFF) break;
            if (++padding == kMaxPadding) {
                if (_out) std::fputs("too many padding bytes\n", _out);
                return false;
            }
        }
        const int high = marker < 0 ? -1 : in.get();
        const int low = high < 0 ? -1 : in.get();
        if (low < 0) {
            errFatal("Premature end of file?");
            return false;
        }
        const std::size_t length = std::size_t(high) << 8 | std::size_t(low);
        if (length < 2) {
            errFatal("invalid marker");
            return false;
        }
        Section section{unsigned(marker), {}};
        try {
            section.data.resize(length);
        } catch (const std::bad_alloc&) {
            errFatal("Could not allocate memory");
            return false;
        }
        section.data[0] = std::uint8_t(high);
        section.data[1] = std::uint8_t(low);
        if (in.read(section.data.data() + 2, length - 2) != length - 2) {
            errFatal("Premature end of file?");
            return false;
        }
        _sections.push_back(std::move(section));
        Section& s = _sections.back();
        const std::vector<std::uint8_t>& d = s.data;

        if (isStartOfFrame(s.type)) {
            _info.process = int(s.type);
            if (d.size() >= 8) {
                _info.height = d[3] << 8 | d[4];
                _info.width = d[5] << 8 | d[6];
                _info.isColor = d[7] == 3;
            }
            continue;
        }
        switch (s.type) {
            case M_APP1:
                if ((mode & READ_EXIF) && d.size() >= 6 && std::memcmp(&d[2], "Exif", 4) == 0) {
                    processExif(s.data);
                } else {
                    _dropLastSection();  // XMP and other APP1 kinds are not carried
                }
                break;
            case M_COM:
                if ((mode & READ_EXIF) && !haveComment) {
                    _info.comments = commentText(d);
                    haveComment = true;
                } else {
                    _dropLastSection();
                }
                break;
            case M_APP0:
                _dropLastSection();  // the writer puts its own JFIF header back where needed
                break;
            case M_EOI:
                if (_out) std::fputs("No image in jpeg!\n", _out);
                return false;
            case M_SOS: {
                if (!(mode & READ_IMAGE)) return true;
                const std::optional<std::uint64_t> rest = in.remaining();
                if (!rest) {
                    errFatal("could not read the rest of the image");
                    return false;
                }
                Section image{Section::kImageData, {}};
                try {
                    if (*rest > image.data.max_size()) throw std::bad_alloc();
                    image.data.resize(std::size_t(*rest));
                } catch (const std::bad_alloc&) {
                    errFatal("could not allocate data for entire image");
                    return false;
                }
                if (in.read(image.data.data(), image.data.size()) != image.data.size()) {
                    errFatal("could not read the rest of the image");
                    return false;
                }
                _sections.push_back(std::move(image));
                _haveAll = true;
                return true;
            }
            default:
                break;  // tables, restart interval, colour profiles and the rest are kept
        }
    }
}

bool JpegContext::_readJpeg(JpegByteSource& in, int mode, const std::string& name) {
    const bool ok = _readSections(in, mode);
    if (!ok) {
        if (_out) std::fprintf(_out, "Not JPEG (or bad one): %s\n", name.c_str());
        discardData();
    }
    return ok;
}

bool JpegContext::readJpegFile(const std::string& path, int mode) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        if (_err) std::fprintf(_err, "can't open '%s'\n", path.c_str());
        return false;
    }
    FileSource in(file);
    const bool ok = _readJpeg(in, mode, path);
    std::fclose(file);
    return ok;
}

bool JpegContext::readJpegBuffer(std::span<const std::uint8_t> bytes, int mode,
                                 const std::string& name) {
    MemorySource in(bytes);
    return _readJpeg(in, mode, name);
}

void JpegContext::discardAllButExif() {
    std::optional<Section> exif, comment;
    for (Section& s : _sections) {
        if (s.type == M_APP1 && !exif) {
            exif = std::move(s);
        } else if (s.type == M_COM && !comment) {
            comment = std::move(s);
        } else {
            _forgetPointersInto(s.data);
        }
    }
    _sections.clear();
    if (exif) _sections.push_back(std::move(*exif));
    if (comment) _sections.push_back(std::move(*comment));
}

std::vector<std::uint8_t> JpegContext::writeJpegBuffer() {
    if (!_haveAll) errFatal("Can't write back - didn't read all");
    static constexpr std::uint8_t kSoi[] = {0xFF, 0xD8};
    // APP0 "JFIF" 1.01, 300 dots per inch both ways, no thumbnail.
    static constexpr std::uint8_t kJfif[] = {0xFF, 0xE0, 0x00, 0x10, 0x4A, 0x46, 0x49, 0x46, 0x00,
                                             0x01, 0x01, 0x01, 0x01, 0x2C, 0x01, 0x2C, 0x00, 0x00};
    std::vector<std::uint8_t> out(std::begin(kSoi), std::end(kSoi));
    const auto put = [&out](const std::uint8_t* bytes, std::size_t n) {
        out.insert(out.end(), bytes, bytes + n);
    };
    if (_sections.empty() || (_sections[0].type != M_APP0 && _sections[0].type != M_APP1)) {
        put(kJfif, sizeof kJfif);
    }
    if (_sections.empty()) return out;
    for (std::size_t i = 0; i + 1 < _sections.size(); ++i) {
        const std::uint8_t marker[] = {0xFF, std::uint8_t(_sections[i].type)};
        put(marker, sizeof marker);
        put(_sections[i].data.data(), _sections[i].size());
    }
    put(_sections.back().data.data(), _sections.back().size());
    return out;
}

}  // namespace marigold
