#pragma once

namespace marigold {

// libvips' optional format modules (HEIF, JPEG XL, PDF and others) pull in large libraries
// whose loading takes longer than a whole small export. A command-line run can start
// without them and load them only for a file the built-in loaders do not know.
enum class VipsModules { Loaded, Deferred };

// Starts libvips once per process: untrusted loaders blocked, a small operation cache
// (previews are recomputed constantly and must not pin large images). Returns false and
// prints the reason when libvips cannot start.
bool startVips(const char* argv0, VipsModules modules = VipsModules::Loaded);

// Loads the modules a deferred start left out; false when there was nothing left to load.
bool loadDeferredVipsModules();

// libvips reports damaged input with GLib warnings as well as with its error; a command that
// promises one line per failure hides them. Shown unless turned off.
void setVipsWarningsShown(bool shown);

}  // namespace marigold
