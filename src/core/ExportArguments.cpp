#include "core/ExportArguments.h"

#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <climits>
#include <cmath>

namespace marigold {

namespace {

using Sizing = ExportOptions::Sizing;

const QStringList kValuedOptions = {
    QStringLiteral("export"),  QStringLiteral("crop"),         QStringLiteral("scale"),
    QStringLiteral("width"),   QStringLiteral("height"),       QStringLiteral("sharpen"),
    QStringLiteral("border"),  QStringLiteral("border-color"), QStringLiteral("format"),
    QStringLiteral("quality"), QStringLiteral("limit"),        QStringLiteral("preserve-exif"),
    QStringLiteral("rotate"),  QStringLiteral("ratio"),        QStringLiteral("size"),
};

ParsedExport refused(const QString& reason) {
    return {std::nullopt, reason};
}

// Never taken as the value of the option before it, so "--export --help" is a request for help;
// single-dash values such as "-2" still reach their option and its message.
bool looksLikeOption(const QString& argument) {
    return argument.startsWith(QLatin1String("--")) || argument == QLatin1String("-h");
}

std::optional<int> wholeNumber(const QString& text, int low, int high) {
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < low || value > high) return std::nullopt;
    return value;
}

std::optional<double> positiveNumber(const QString& text) {
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value) || !(value > 0)) return std::nullopt;
    return value;
}

std::optional<PixelRect> cropFrom(const QString& text) {
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4) return std::nullopt;
    const auto x = wholeNumber(parts[0], 0, INT_MAX), y = wholeNumber(parts[1], 0, INT_MAX);
    const auto w = wholeNumber(parts[2], 1, INT_MAX), h = wholeNumber(parts[3], 1, INT_MAX);
    if (!x || !y || !w || !h) return std::nullopt;
    return PixelRect{*x, *y, *w, *h};
}

std::optional<int> formatNamed(const QString& name) {
    const QString lower = name.toLower();
    if (lower == QLatin1String("jpg") || lower == QLatin1String("jpeg")) return JpegFormat;
    if (lower == QLatin1String("png")) return PngFormat;
    if (lower == QLatin1String("tif") || lower == QLatin1String("tiff")) return TiffFormat;
    if (lower == QLatin1String("gif")) return GifFormat;
    return std::nullopt;
}

QString quoted(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}

}  // namespace

bool isExportCommand(const QStringList& arguments) {
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--")) return false;
        if (argument == QLatin1String("--export") ||
            argument.startsWith(QLatin1String("--export=")))
            return true;
    }
    return false;
}

ParsedExport parseExportArguments(const QStringList& arguments) {
    QMap<QString, QString> values;
    QStringList inputs;
    QString missing;
    ExportOptions options;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (optionsEnded || !argument.startsWith(QLatin1Char('-')) ||
            argument == QLatin1String("-")) {
            inputs << argument;
        } else if (argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            options.help = true;
        } else if (argument == QLatin1String("--verbose")) {
            options.verbose = true;
        } else if (argument == QLatin1String("--flip-horizontal")) {
            options.flipHorizontal = true;
        } else if (argument == QLatin1String("--flip-vertical")) {
            options.flipVertical = true;
        } else if (argument == QLatin1String("--desaturate")) {
            options.desaturate = true;
        } else {
            const qsizetype equals = argument.indexOf(QLatin1Char('='));
            const QString name = argument.left(equals).mid(2);
            if (!argument.startsWith(QLatin1String("--")) || !kValuedOptions.contains(name))
                return refused(QStringLiteral("unknown option %1").arg(argument.left(equals)));
            if (values.contains(name))
                return refused(QStringLiteral("--%1 is given more than once").arg(name));
            if (equals >= 0) {
                values[name] = argument.mid(equals + 1);
            } else if (i + 1 < arguments.size() && !looksLikeOption(arguments[i + 1])) {
                values[name] = arguments[++i];
            } else if (missing.isEmpty()) {
                // Not fatal yet: "--export --help" asks for help.
                missing = name;
            }
        }
    }
    if (options.help) return {options, {}};
    if (!missing.isEmpty()) return refused(QStringLiteral("--%1 needs a value").arg(missing));

    const auto has = [&values](const char* name) { return values.contains(QLatin1String(name)); };
    const auto text = [&values](const char* name) { return values.value(QLatin1String(name)); };
    const auto unusable = [&text](const char* name, const char* wanted) {
        return refused(QStringLiteral("--%1 must be %2, not %3")
                           .arg(QLatin1String(name), QLatin1String(wanted), quoted(text(name))));
    };

    options.output = text("export");
    if (options.output.isEmpty())
        return refused(QStringLiteral("no output file: give --export OUT"));
    if (inputs.isEmpty()) return refused(QStringLiteral("no input file given"));
    if (inputs.size() > 1) {
        return refused(
            QStringLiteral("one input file only, not %1").arg(inputs.join(QLatin1String(", "))));
    }
    options.input = inputs.first();

    if (has("rotate")) {
        bool ok = false;
        const double degrees = text("rotate").toDouble(&ok);
        // Written so that NaN fails too.
        if (!ok || !(degrees >= -180 && degrees <= 180))
            return unusable("rotate", "a number of degrees from -180 to 180");
        options.rotation = degrees;
    }
    if (int(has("crop")) + int(has("ratio")) + int(has("size")) > 1)
        return refused(QStringLiteral("use only one of --crop, --ratio and --size"));
    if (has("size") && (has("scale") || has("width") || has("height")))
        return refused(QStringLiteral("--size is the output size: use it without --scale, "
                                      "--width and --height"));
    if (has("crop") && !(options.crop = cropFrom(text("crop"))))
        return unusable("crop", "X,Y,W,H in whole pixels, W and H above 0");
    if (has("ratio")) {
        const QStringList terms = text("ratio").split(QLatin1Char(':'));
        const auto wide = terms.size() == 2 ? positiveNumber(terms[0]) : std::nullopt;
        const auto high = terms.size() == 2 ? positiveNumber(terms[1]) : std::nullopt;
        if (!wide || !high) return unusable("ratio", "W:H with both terms above 0");
        options.ratio = std::pair{*wide, *high};
    }
    if (has("size")) {
        const QStringList sides = text("size").split(QLatin1Char('x'), Qt::KeepEmptyParts,
                                                     Qt::CaseInsensitive);
        const auto wide = sides.size() == 2 ? wholeNumber(sides[0], 10, 100000) : std::nullopt;
        const auto high = sides.size() == 2 ? wholeNumber(sides[1], 10, 100000) : std::nullopt;
        if (!wide || !high) return unusable("size", "WxH in whole pixels, each from 10 to 100000");
        options.exactSize = QSize(*wide, *high);
    }

    if (int(has("scale")) + int(has("width")) + int(has("height")) > 1)
        return refused(QStringLiteral("use only one of --scale, --width and --height"));
    if (has("scale")) {
        const auto scale = positiveNumber(text("scale"));
        if (!scale) return unusable("scale", "a number above 0");
        options.size = *scale;
    }
    for (const auto& [name, sizing] :
         {std::pair{"width", Sizing::Width}, {"height", Sizing::Height}}) {
        if (!has(name)) continue;
        const auto pixels = wholeNumber(text(name), 1, INT_MAX);
        if (!pixels) return unusable(name, "a whole number of pixels above 0");
        options.sizing = sizing;
        options.size = *pixels;
    }

    if (has("sharpen")) {
        bool ok = false;
        const double sharpness = text("sharpen").toDouble(&ok);
        if (!ok || !(sharpness >= 0 && sharpness <= 2))
            return unusable("sharpen", "a number from 0 to 2");
        options.sharpness = float(sharpness);
    }

    struct WholeOption {
        const char* name;
        int low, high;
        const char* wanted;
        int* value;
    };
    const WholeOption wholeOptions[] = {
        {"border", 0, 10000, "a whole number of pixels from 0 to 10000", &options.borderThickness},
        {"quality", 1, 100, "a whole number from 1 to 100", &options.quality},
        {"limit", 10, 9990, "a whole number of KB from 10 to 9990", &options.limitKB},
        {"preserve-exif", 0, 2, "0, 1 or 2", &options.preserveExif},
    };
    for (const WholeOption& option : wholeOptions) {
        if (!has(option.name)) continue;
        const auto value = wholeNumber(text(option.name), option.low, option.high);
        if (!value) return unusable(option.name, option.wanted);
        *option.value = *value;
    }

    if (has("border-color")) {
        static const QRegularExpression hex(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
        if (!hex.match(text("border-color")).hasMatch()) return unusable("border-color", "#RRGGBB");
        options.borderColor = QColor(text("border-color"));
    }

    if (has("format")) {
        const auto format = formatNamed(text("format"));
        if (!format) return unusable("format", "jpg, png, tif or gif");
        options.format = *format;
    } else {
        options.format = formatNamed(QFileInfo(options.output).suffix()).value_or(JpegFormat);
    }
    // Ignoring it would hand back a file of any size to a script that asked for a bound.
    if (options.limitKB != 0 && options.format != JpegFormat)
        return refused(QStringLiteral("--limit applies to JPEG output only"));
    return {options, {}};
}

QString exportHelpText() {
    return QStringLiteral(
        "Usage: marigold --export OUT [options] IN\n"
        "\n"
        "Turns, crops, scales, sharpens and frames the image IN and writes it to OUT,\n"
        "without a window or a display.\n"
        "\n"
        "  --export OUT            the file to write; an existing OUT is replaced only once\n"
        "                          the new file is complete, and kept when the export fails\n"
        "  --flip-horizontal       mirror the picture left to right\n"
        "  --flip-vertical         mirror the picture top to bottom\n"
        "  --desaturate            make the picture grey\n"
        "  --rotate DEG            turn the picture DEG degrees counter-clockwise (negative:\n"
        "                          clockwise), from -180 to 180, after any flip and grey, as\n"
        "                          the window does; the turned picture fills a canvas just\n"
        "                          large enough, its uncovered corners transparent (white\n"
        "                          in a JPEG)\n"
        "  --crop X,Y,W,H          the region to keep, in pixels of the picture after any\n"
        "                          flip and turn, counted from its top-left corner\n"
        "                          (default: all of it); a region reaching past its edges\n"
        "                          is clipped to it, one wholly outside it is refused\n"
        "  --ratio W:H             instead of --crop: the largest region of that ratio\n"
        "                          centred in the picture (6:4 is landscape)\n"
        "  --size WxH              instead of --crop and the size options: the largest\n"
        "                          centred region of that ratio, scaled to exactly W x H\n"
        "                          pixels (each from 10 to 100000)\n"
        "  --scale F               the output size as a factor of the region (default 1)\n"
        "  --width W               scale the region to W pixels wide\n"
        "  --height H              scale the region to H pixels high\n"
        "                          (at most one of --scale, --width, --height; no side of\n"
        "                          the output is made shorter than 10 pixels)\n"
        "  --sharpen S             luminance sharpening from 0 (none, default) to 2\n"
        "  --border PX             a border PX pixels wide inside the output's edges\n"
        "                          (default 0: none)\n"
        "  --border-color #RRGGBB  the border's colour (default #000000)\n"
        "  --format jpg|png|tif|gif  the file format (TIFF is LZW-compressed); default:\n"
        "                          from OUT's extension (.jpg .jpeg .png .tif .tiff .gif),\n"
        "                          else jpg\n"
        "  --quality Q             JPEG quality from 1 to 100 (default 80)\n"
        "  --limit KB              JPEG only: step the quality down from Q until the file\n"
        "                          is under KB kilobytes (10 to 9990); when no quality\n"
        "                          fits, nothing is written: \"File Size Limit Too Low\"\n"
        "  --preserve-exif 0|1|2   0: no metadata; 1 (default): a JPEG source's EXIF block and\n"
        "                          comment copied into a JPEG, the source's metadata into a\n"
        "                          TIFF; 2: its metadata into a JPEG or TIFF; what is carried\n"
        "                          counts against --limit\n"
        "  --verbose               on standard error, each JPEG attempt as\n"
        "                          \"quality Q, N bytes\" (\"at least N bytes\" where it\n"
        "                          stopped early, far over the limit), then the size written\n"
        "  -h, --help              this text\n"
        "\n"
        "The picture is first turned upright as IN's orientation tag says, and OUT is\n"
        "marked upright. A file that is cut short or damaged is refused.\n"
        "Exit status: 0 when OUT was written, 1 when the export failed, 2 for unusable\n"
        "arguments; the reason is one line on standard error, starting \"marigold: \".\n");
}

}  // namespace marigold
