#pragma once

// Libraries that only some scans need (libcurl, libzip, libcups and what they bring) are
// loaded on first use rather than at start, so an idle daemon never maps them. Once
// loaded they stay: their global state is not made to be unloaded.

#include <dlfcn.h>

#include <string>

namespace tov {

// Opens the library by its shared object name (or path), with its symbols kept to itself;
// null when it cannot be loaded, with the loader's reason in reason.
inline void* openSharedLibrary(const char* name, std::string& reason) {
    void* library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* error = ::dlerror();
        reason = error != nullptr ? error : "unknown reason";
    }
    return library;
}

// Points function at the library's symbol of that name; false when it has none.
template <class Function>
bool bindSymbol(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr;
}

}  // namespace tov
