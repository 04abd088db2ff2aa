#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "core/ExportArguments.h"
#include "output/JpegSizeSearch.h"
#include "platform/Geometry.h"

namespace marigold {

// `crop` clipped to an image of `wide` x `high` pixels and turned into the pipeline's
// rectangle (origin lower-left, y up); nothing when no part of it lies inside the image.
std::optional<RectF> pipelineRect(PixelRect crop, int wide, int high);

struct ExportResult {
    QString error;                      // one line; empty on success
    std::vector<JpegAttempt> attempts;  // the JPEG quality search, in order
    int wide = 0;                       // output pixels, once known
    int high = 0;
};

// Loads, flips, greys, turns, crops, scales, sharpens, frames and writes `options.output`
// atomically: on any failure an existing output file is left as it was.
ExportResult runExport(const ExportOptions& options);

// The whole command: help, or parse, start libvips, export and report. Returns the process
// exit status.
int runExportCommand(const QStringList& arguments, const char* argv0);

}  // namespace marigold
