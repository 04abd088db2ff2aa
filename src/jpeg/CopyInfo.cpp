#include "jpeg/CopyInfo.h"

#include <QFile>

#include "jpeg/JpegContext.h"

namespace marigold {

bool copyInfoFromPath(const QString& source, const QString& target) {
    // A context of its own: the transplant leaves it empty whether it succeeds or not.
    JpegContext context;
    return context.copyExif(QFile::encodeName(source).toStdString(),
                            QFile::encodeName(target).toStdString());
}

}  // namespace marigold
