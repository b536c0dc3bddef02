#pragma once

// libzip, loaded when the first archive is made or read rather than when tov starts: a
// scan that makes no archive (tov -p, a scan without a report) then never maps libzip
// and the cryptography library it brings, a good part of tov's resident size and of its
// start-up time.

#include <zip.h>

namespace tov {

struct LibZip {
    decltype(&::zip_close) close = nullptr;
    decltype(&::zip_discard) discard = nullptr;
    decltype(&::zip_error_fini) errorFini = nullptr;
    decltype(&::zip_error_init) errorInit = nullptr;
    decltype(&::zip_fclose) fclose = nullptr;
    decltype(&::zip_file_add) fileAdd = nullptr;
    decltype(&::zip_fopen_index) fopenIndex = nullptr;
    decltype(&::zip_fread) fread = nullptr;
    decltype(&::zip_get_name) getName = nullptr;
    decltype(&::zip_get_num_entries) getNumEntries = nullptr;
    decltype(&::zip_open) open = nullptr;
    decltype(&::zip_open_from_source) openFromSource = nullptr;
    decltype(&::zip_source_buffer) sourceBuffer = nullptr;
    decltype(&::zip_source_buffer_create) sourceBufferCreate = nullptr;
    decltype(&::zip_source_close) sourceClose = nullptr;
    decltype(&::zip_source_free) sourceFree = nullptr;
    decltype(&::zip_source_keep) sourceKeep = nullptr;
    decltype(&::zip_source_open) sourceOpen = nullptr;
    decltype(&::zip_source_read) sourceRead = nullptr;
    decltype(&::zip_source_stat) sourceStat = nullptr;
    decltype(&::zip_stat_init) statInit = nullptr;
};

// The loaded library; nothing, with a warning, when it cannot be loaded (the next call
// tries again). Once loaded it stays.
const LibZip* libZip();

}  // namespace tov
