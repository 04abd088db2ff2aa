#pragma once

namespace marigold {

// Starts libvips once per process: untrusted loaders blocked, a small operation cache
// (previews are recomputed constantly and must not pin large images). Returns false and
// prints the reason when libvips cannot start.
bool startVips(const char* argv0);

}  // namespace marigold
