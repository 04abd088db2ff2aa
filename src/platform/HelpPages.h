#pragma once

#include <QString>

namespace marigold {

// Opens a bundled help page in the desktop's browser. The pages are inside the program, so
// the page is first copied into `folder` (the per-process temporary folder), where a browser
// can read it. False when it cannot be copied or no browser takes it.
bool openHelpPage(const QString& page, const QString& folder);

}  // namespace marigold
