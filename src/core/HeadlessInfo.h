#pragma once

#include <QStringList>

namespace marigold {

// `marigold --info FILE`: the information window's fields for FILE, one "Label: value"
// line each, without a display. Returns the exit status: 0, 1 when no facts could be read
// (one line on standard error), 2 for unusable arguments.
bool isInfoCommand(const QStringList& arguments);
int runInfoCommand(const QStringList& arguments, const char* argv0);

}  // namespace marigold
