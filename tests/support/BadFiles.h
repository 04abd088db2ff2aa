#pragma once

#include <QString>
#include <vector>

namespace marigold::test {

struct BadFile {
    const char* fault;
    QString path;
};

// Files an image loader must refuse, written into `dir`: text named .jpg, a JPEG cut in
// half, an empty file, a PNG whose header claims 100000 x 100000 pixels, a folder, and a
// path where nothing exists.
std::vector<BadFile> badImageFiles(const QString& dir);

}  // namespace marigold::test
