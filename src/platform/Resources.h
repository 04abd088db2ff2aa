#pragma once

namespace marigold {

// Registers the resources compiled into the library (factory defaults, cursors). Safe to
// call more than once.
void initResources();

}  // namespace marigold
