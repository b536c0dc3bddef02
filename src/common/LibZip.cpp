#include "common/LibZip.h"

#include <mutex>
#include <optional>

#include "common/QVSLogger.h"
#include "common/SharedLibrary.h"

namespace tov {
namespace {

bool bindAll(void* library, LibZip& zip) {
    return bindSymbol(library, "zip_close", zip.close) && bindSymbol(library, "zip_discard", zip.discard) &&
           bindSymbol(library, "zip_error_fini", zip.errorFini) && bindSymbol(library, "zip_error_init", zip.errorInit) &&
           bindSymbol(library, "zip_fclose", zip.fclose) && bindSymbol(library, "zip_file_add", zip.fileAdd) &&
           bindSymbol(library, "zip_fopen_index", zip.fopenIndex) && bindSymbol(library, "zip_fread", zip.fread) &&
           bindSymbol(library, "zip_get_name", zip.getName) && bindSymbol(library, "zip_get_num_entries", zip.getNumEntries) &&
           bindSymbol(library, "zip_open", zip.open) && bindSymbol(library, "zip_open_from_source", zip.openFromSource) &&
           bindSymbol(library, "zip_source_buffer", zip.sourceBuffer) &&
           bindSymbol(library, "zip_source_buffer_create", zip.sourceBufferCreate) &&
           bindSymbol(library, "zip_source_close", zip.sourceClose) && bindSymbol(library, "zip_source_free", zip.sourceFree) &&
           bindSymbol(library, "zip_source_keep", zip.sourceKeep) && bindSymbol(library, "zip_source_open", zip.sourceOpen) &&
           bindSymbol(library, "zip_source_read", zip.sourceRead) && bindSymbol(library, "zip_source_stat", zip.sourceStat) &&
           bindSymbol(library, "zip_stat_init", zip.statInit);
}

std::optional<LibZip> load() {
    std::string reason;
    void* library = openSharedLibrary(TOV_LIBZIP_LIBRARY, reason);
    if (library == nullptr) {
        QVSLogger::warning("libzip (%s) cannot be loaded: %s", TOV_LIBZIP_LIBRARY, reason.c_str());
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
