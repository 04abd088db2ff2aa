#include "platform/VipsRuntime.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <gmodule.h>
#include <vips/vips8>

namespace marigold {

namespace {

bool modulesDeferred = false;

// libvips looks for its modules under $VIPSHOME when that is set; a home without modules
// keeps them out of start-up. The variable is put back at once so that no other program
// started from here inherits it.
int initWithoutModules(const char* argv0) {
    const QByteArray previous = qgetenv("VIPSHOME");
    const bool hadPrevious = qEnvironmentVariableIsSet("VIPSHOME");
    qputenv("VIPSHOME", QByteArray("/nonexistent/marigold-no-vips-modules"));
    const int status = VIPS_INIT(argv0);
    if (hadPrevious) {
        qputenv("VIPSHOME", previous);
    } else {
        qunsetenv("VIPSHOME");
    }
    return status;
}

// Where libvips keeps its modules: beside the library itself.
QString moduleFolder() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<void*>(&vips_init), &library) == 0 || !library.dli_fname) return {};
    return QFileInfo(QString::fromLocal8Bit(library.dli_fname)).absolutePath() +
           QStringLiteral("/vips-modules-%1.%2").arg(vips_version(0)).arg(vips_version(1));
}

}  // namespace

bool startVips(const char* argv0, VipsModules modules) {
    static const bool started = [argv0, modules] {
        const char* name = argv0 ? argv0 : "marigold";
        modulesDeferred = modules == VipsModules::Deferred;
        if ((modulesDeferred ? initWithoutModules(name) : VIPS_INIT(name)) != 0) {
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

bool loadDeferredVipsModules() {
    if (!modulesDeferred) return false;
    modulesDeferred = false;
    const QDir folder(moduleFolder());
    for (const QString& name : folder.entryList({QStringLiteral("*.so")}, QDir::Files)) {
        // As libvips itself loads them: lazily bound, and kept for the life of the process
        // since the types they register cannot be taken back.
        if (GModule* module = g_module_open(qPrintable(folder.filePath(name)), G_MODULE_BIND_LAZY)) {
            g_module_make_resident(module);
        }
    }
    // The block applies to the loaders registered when it is set: set it again for these.
    vips_block_untrusted_set(TRUE);
    return true;
}

void setVipsWarningsShown(bool shown) {
    static guint handler = 0;
    if (!shown && handler == 0) {
        handler = g_log_set_handler(
            "VIPS", G_LOG_LEVEL_WARNING,
            [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
    } else if (shown && handler != 0) {
        g_log_remove_handler("VIPS", handler);
        handler = 0;
    }
}

}  // namespace marigold
