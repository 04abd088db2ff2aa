#include "platform/Resources.h"

#include <QtGlobal>

// The macro declares a function at global scope, so it cannot be used inside a namespace.
static void initLibraryResources() { Q_INIT_RESOURCE(resources); }

namespace marigold {

void initResources() {
    static const bool done = (initLibraryResources(), true);
    Q_UNUSED(done);
}

}  // namespace marigold
