#pragma once

#include <QString>

namespace marigold {

// The per-process folder that every output file is written into before it is saved,
// copied, dragged or sent. Each file gets a numbered sub-folder of its own, so it can carry
// the document's name while earlier files, perhaps still being read by the application
// they were handed to, are never overwritten. The folder goes away at quit.
class TempFolder {
public:
    // `base` ends in a slash; by default the system's temporary folder.
    explicit TempFolder(QString base = defaultBase());

    static QString defaultBase();
    // base + "com.bluefinch.Marigold-<pid>".
    QString tmpdirString() const;
    // Makes the folder on first use (private to the user); empty when it cannot be made,
    // and tried again next time.
    QString tmpdir();
    // Removes the folder this object made and everything in it; true when it is gone.
    bool cleanupTmpdir();

    // "<tmpdir>/<n>" for the next n, made on the way; empty when there is no folder.
    QString nextTempSubDir();
    // "<fresh sub-folder>/<name>.<extension>", slashes in the name made dashes; empty when
    // there is no folder.
    QString pathForImageNamed(const QString& name, const QString& extension);

    // Removes folders under `base` left by Marigold processes that no longer run (a crash
    // or a kill skips the clean-up at quit). Returns how many were removed.
    static int removeStaleTmpdirs(const QString& base = defaultBase());

private:
    QString _base;
    QString _path;
    unsigned _counter = 0;
};

}  // namespace marigold
