#pragma once

#include <QString>

namespace marigold {

class Defaults;

// What the output view asks of the controller that owns the document: the output file, made
// from the document at full resolution whenever the view's press, drag or double click
// needs it.
class OutputViewDelegate {
public:
    virtual ~OutputViewDelegate() = default;

    // The output written in the chosen format; empty when nothing could be written.
    virtual QString writeTmpFile() = 0;
    // A drag found no file to carry: says why when the person can act on it (no JPEG quality
    // kept the last write under the size limit).
    virtual void alertIfLimitTooLow() = 0;
    virtual Defaults& defaults() = 0;
};

// Where a double click sends the output file; the destinations implement it.
class FileReceiver {
public:
    virtual ~FileReceiver() = default;
    virtual void sendFile(const QString& path) = 0;
};

}  // namespace marigold
