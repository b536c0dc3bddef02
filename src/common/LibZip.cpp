#include "common/LibZip.h"

#include <dlfcn.h>

#include <mutex>
#include <optional>

#include "common/QVSLogger.h"

namespace tov {
namespace {

template <class Function>
bool bind(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr;
}

bool bindAll(void* library, LibZip& zip) {
    return bind(library, "zip_close", zip.close) && bind(library, "zip_discard", zip.discard) &&
           bind(library, "zip_error_fini", zip.errorFini) && bind(library, "zip_error_init", zip.errorInit) &&
           bind(library, "zip_fclose", zip.fclose) && bind(library, "zip_file_add", zip.fileAdd) &&
           bind(library, "zip_fopen_index", zip.fopenIndex) && bind(library, "zip_fread", zip.fread) &&
           bind(library, "zip_get_name", zip.getName) && bind(library, "zip_get_num_entries", zip.getNumEntries) &&
           bind(library, "zip_open", zip.open) && bind(library, "zip_open_from_source", zip.openFromSource) &&
           bind(library, "zip_source_buffer", zip.sourceBuffer) &&
           bind(library, "zip_source_buffer_create", zip.sourceBufferCreate) &&
           bind(library, "zip_source_close", zip.sourceClose) && bind(library, "zip_source_free", zip.sourceFree) &&
           bind(library, "zip_source_keep", zip.sourceKeep) && bind(library, "zip_source_open", zip.sourceOpen) &&
           bind(library, "zip_source_read", zip.sourceRead) && bind(library, "zip_source_stat", zip.sourceStat) &&
           bind(library, "zip_stat_init", zip.statInit);
}

std::optional<LibZip> load() {
    void* library = ::dlopen(TOV_LIBZIP_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = ::dlerror();
        QVSLogger::warning("libzip (%s) cannot be loaded: %s", TOV_LIBZIP_LIBRARY,
                           reason != nullptr ? reason : "unknown reason");
        return std::nullopt;
    }
    LibZip zip;
    if (!bindAll(library, zip)) {
        QVSLogger::warning("libzip (%s) lacks a function tov needs.", TOV_LIBZIP_LIBRARY);
        ::dlclose(library);
        return std::nullopt;
    }
    return zip;
}

}  // namespace

const LibZip* libZip() {
    static std::mutex mutex;
    static std::optional<LibZip> loaded;
    std::lock_guard<std::mutex> guard(mutex);
    if (!loaded) loaded = load();
    return loaded ? &*loaded : nullptr;
}

}  // namespace tov
