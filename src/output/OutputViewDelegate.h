#pragma once

#include <QString>
#include <optional>

#include "output/ImageMetadata.h"

namespace marigold {

class Defaults;
class TempFolder;

// What the output side needs from the document: the settings an output file is written
// with and where it goes. The document controller implements it.
class OutputViewDelegate {
public:
    virtual ~OutputViewDelegate() = default;

    virtual Defaults& defaults() = 0;
    virtual TempFolder& tempFolder() = 0;
    // The base name of output files.
    virtual QString filename() = 0;
    virtual int fileFormat() const = 0;
    virtual int compression() const = 0;
    virtual bool hasFilesizeLimit() const = 0;
    virtual QString filesizeLimit() const = 0;
    // The source file's metadata, read afresh; nothing when there is no source file.
    virtual std::optional<Metadata> metadata() const = 0;
    virtual QString sourcePath() const = 0;
};

// Where a double click sends the output file; the destinations implement it.
class FileReceiver {
public:
    virtual ~FileReceiver() = default;
    virtual void sendFile(const QString& path) = 0;
};

}  // namespace marigold
