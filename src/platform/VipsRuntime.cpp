#include "platform/VipsRuntime.h"

#include <cstdio>
#include <vips/vips8>

namespace marigold {

bool startVips(const char* argv0) {
    static const bool started = [argv0] {
        if (VIPS_INIT(argv0 ? argv0 : "marigold") != 0) {
            std::fprintf(stderr, "marigold: cannot start libvips: %s\n", vips_error_buffer());
            return false;
        }
        vips_block_untrusted_set(TRUE);
        vips_cache_set_max(16);
        vips_cache_set_max_mem(64 * 1024 * 1024);
        return true;
    }();
    return started;
}

}  // namespace marigold
