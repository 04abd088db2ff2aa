#pragma once

#include <QString>
#include <vector>

namespace marigold::test {

struct BadFile {
    const char* fault;
    QString path;
    // A picture viewer shows the part that decodes; an exact export refuses it.
    bool partlyReadable = false;
};

// Files an image loader must refuse, written into `dir`: text named .jpg, a 640 x 480 JPEG cut
// in half (partly readable), an empty file, a PNG whose header claims 100000 x 100000 pixels,
// a folder, and a path where nothing exists.
std::vector<BadFile> badImageFiles(const QString& dir);

}  // namespace marigold::test
