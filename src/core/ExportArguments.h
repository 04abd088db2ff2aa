#pragma once

#include <QColor>
#include <QSize>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

#include "output/OutputFile.h"
#include "platform/Geometry.h"

namespace marigold {

// One export without a window, as `marigold --export` describes it.
struct ExportOptions {
    enum class Sizing { Scale, Width, Height };

    QString input;
    QString output;
    // Applied to the picture as opened in the window's order: flips and grey, then the turn.
    bool flipHorizontal = false;
    bool flipVertical = false;
    bool desaturate = false;
    double rotation = 0;            // degrees, counter-clockwise, -180 to 180
    std::optional<PixelRect> crop;  // in the turned picture; the whole of it when absent
    // Instead of a crop: the largest centred region of this ratio (width, height).
    std::optional<std::pair<double, double>> ratio;
    // Instead of a crop and a size: the largest centred region of this size's ratio, made
    // exactly this size.
    std::optional<QSize> exactSize;
    Sizing sizing = Sizing::Scale;
    double size = 1;  // the scale factor, or the output width or height in pixels
    float sharpness = 0;
    int borderThickness = 0;  // 0: no border
    QColor borderColor = QColor(0, 0, 0);
    int format = JpegFormat;
    int quality = 80;
    int limitKB = 0;  // 0: no limit
    int preserveExif = 1;
    bool verbose = false;
    bool help = false;  // only print the help text
};

struct ParsedExport {
    std::optional<ExportOptions> options;
    QString error;  // one line, when there are no options
};

// True when the command line asks for an export rather than a window.
bool isExportCommand(const QStringList& arguments);

// `arguments` without the program name. Looks at no file: paths are checked when exporting.
ParsedExport parseExportArguments(const QStringList& arguments);
QString exportHelpText();

}  // namespace marigold
