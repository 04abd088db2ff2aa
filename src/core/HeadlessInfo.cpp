#include "core/HeadlessInfo.h"

#include <QFileInfo>
#include <cstdio>

#include "jpeg/BFImageInfo.h"
#include "platform/VipsRuntime.h"

namespace marigold {

namespace {

const QString kInfo = QStringLiteral("--info");

int refuse(const char* reason) {
    std::fprintf(stderr, "marigold: %s\nUsage: marigold --info FILE\n", reason);
    return 2;
}

}  // namespace

bool isInfoCommand(const QStringList& arguments) {
    return !arguments.isEmpty() && arguments.first() == kInfo;
}

int runInfoCommand(const QStringList& arguments, const char* argv0) {
    if (arguments.size() != 2) return refuse("--info takes exactly one file");
    const QString path = arguments[1];
    const QFileInfo file(path);
    if (!file.exists() || file.isDir()) {
        std::fprintf(stderr, "marigold: %s: %s\n", qPrintable(path),
                     file.isDir() ? "is a folder" : "no such file");
        return 1;
    }
    if (!startVips(argv0, VipsModules::Deferred)) return 1;
    setVipsWarningsShown(false);
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(path);
    if (!info) {
        std::fprintf(stderr, "marigold: %s: not an image file\n", qPrintable(path));
        return 1;
    }
    for (const auto& [label, value] : infoFields(info)) {
        // One line per field: line breaks inside a comment are shown as "\n".
        QString shown = value;
        shown.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
        std::printf("%s: %s\n", qPrintable(label), qPrintable(shown));
    }
    return 0;
}

}  // namespace marigold
