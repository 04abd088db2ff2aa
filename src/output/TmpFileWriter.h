#pragma once

#include <QString>

#include "output/OutputFile.h"
#include "platform/Image.h"

namespace marigold {

class TempFolder;

// One output file as it came out of the encoder.
struct WrittenFile {
    QString path;  // empty unless written
    OutputResult outcome = OutputResult::WriteFailed;
    int quality = 0;  // the JPEG quality the file was written at; 0 for other formats
    qint64 size = 0;
};

// Encodes `image` to `path` as `settings` say. Safe on any thread: it touches nothing shared.
WrittenFile writeOutputAt(const Image& image, const QString& path, const OutputSettings& settings);

// Removes an output file nobody was given, with its numbered folder.
void removeOutputFile(const QString& path);

// The last output file written and whether it still shows the output (the cache flag):
// while the document and the output settings stay as they were, that file is handed out
// again instead of being rendered and encoded anew. Every change of the output moves the
// generation on, so a file made in the background for an older output is never taken.
class TmpFileWriter {
public:
    explicit TmpFileWriter(TempFolder& folder) : _folder(folder) {}

    // The file written for document state `revision` (its name included) with these
    // settings, while the cache flag holds and the file is still there; empty otherwise.
    QString cachedPath(quint64 revision, const OutputSettings& settings) const;
    // A fresh path for an output named `name` in these settings' format; empty when there is
    // no temporary folder.
    QString freshPath(const QString& name, const OutputSettings& settings);
    // Writes `image` at a fresh path and keeps the outcome, as `adopt` does.
    WrittenFile writeTmpFile(const Image& image, const OutputSettings& settings,
                             const QString& name, quint64 revision);
    // Takes a file written for this generation as the current one: a written file sets the
    // cache flag; a limit that could not be met is remembered. False, with the file removed,
    // when the output changed since.
    bool adopt(const WrittenFile& file, quint64 generation, quint64 revision,
               const OutputSettings& settings);
    // What the last adopted outcome was, while it still stands for the current output.
    bool limitTooLow() const { return _limitTooLow; }
    const WrittenFile& current() const { return _current; }

    quint64 generation() const { return _generation; }
    // The output changed: the file no longer shows it. True when the flag was set.
    bool clearCache();
    bool isCacheValid() const { return _cacheValid; }
    // The current file was given to someone (saved, copied, dragged): it must stay.
    void markHandedOut() { _handedOut = true; }

private:
    void _dropUnseenFile();

    TempFolder& _folder;
    WrittenFile _current;
    quint64 _revision = 0;
    quint64 _generation = 0;
    OutputSettings _settings;
    bool _cacheValid = false;
    bool _limitTooLow = false;
    bool _handedOut = false;
};

}  // namespace marigold
