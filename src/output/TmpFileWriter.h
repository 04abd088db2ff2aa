#pragma once

#include <QString>

#include "output/OutputFile.h"
#include "platform/Image.h"

namespace marigold {

class TempFolder;

// Writes outputs into numbered sub-folders of the temporary folder and remembers the last
// one: while the document and the output settings stay as they were (the cache flag), that
// file is handed out again instead of being rendered and encoded anew.
class TmpFileWriter {
public:
    explicit TmpFileWriter(TempFolder& folder) : _folder(folder) {}

    // The file written for document state `revision` (its name included) with these settings,
    // while the cache flag holds and the file is still there; empty otherwise.
    QString cachedPath(quint64 revision, const OutputSettings& settings) const;
    // Writes `image` under `name` into a fresh sub-folder. Empty when a JPEG could not be kept
    // under the size limit (`limitTooLow` then says so), when there is no temporary folder,
    // or when the file could not be written.
    QString writeTmpFile(const Image& image, const OutputSettings& settings, const QString& name,
                         quint64 revision);
    bool limitTooLow() const { return _limitTooLow; }

    void clearCache() { _cacheValid = false; }
    bool isCacheValid() const { return _cacheValid; }

private:
    TempFolder& _folder;
    QString _path;
    quint64 _revision = 0;
    OutputSettings _settings;
    bool _cacheValid = false;
    bool _limitTooLow = false;
};

}  // namespace marigold
