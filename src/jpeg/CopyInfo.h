#pragma once

#include <QString>

namespace marigold {

// Carries the EXIF block and first comment of the JPEG at `source` into the freshly written
// JPEG at `target`, in place; false (with `target` as it was) when either is no usable JPEG.
bool copyInfoFromPath(const QString& source, const QString& target);

}  // namespace marigold
