#include <cups/cups.h>

#include <string>

#include "common/QVSLogger.h"
#include "common/SharedLibrary.h"
#include "platform/PosixFacts.h"

namespace tov {
namespace {

// libcups and what it brings (TLS, Kerberos, the message bus: about 3 MiB resident) are
// loaded when printers are first asked for, in a full scan, so an idle daemon never maps
// them.
struct Cups {
    decltype(&cupsGetDests2) getDests = nullptr;
    decltype(&cupsGetOption) getOption = nullptr;
    decltype(&cupsFreeDests) freeDests = nullptr;
    bool ready = false;
};

Cups loadCups() {
    Cups cups;
    std::string reason;
    void* library = openSharedLibrary(TOV_CUPS_LIBRARY, reason);
    if (library == nullptr) {
        QVSLogger::warning("Printers cannot be listed: %s cannot be loaded (%s).", TOV_CUPS_LIBRARY, reason.c_str());
        return cups;
    }
    cups.ready = bindSymbol(library, "cupsGetDests2", cups.getDests) &&
                 bindSymbol(library, "cupsGetOption", cups.getOption) &&
                 bindSymbol(library, "cupsFreeDests", cups.freeDests);
    if (!cups.ready) QVSLogger::warning("Printers cannot be listed: %s is not usable.", TOV_CUPS_LIBRARY);
    return cups;
}

const Cups& cupsLibrary() {
    static const Cups cups = loadCups();
    return cups;
}

}  // namespace

// Every destination the printing system knows, without the saved instances of a
// destination (they are the same printer with other options). Absent when the printing
// library cannot be loaded.
Value printersFact(const std::string&) {
    const Cups& cups = cupsLibrary();
    if (!cups.ready) return Value();
    cups_dest_t* destinations = nullptr;
    const int count = cups.getDests(CUPS_HTTP_DEFAULT, &destinations);
    ArrayRef printers = makeArray();
    for (int index = 0; index < count; ++index) {
        const cups_dest_t& destination = destinations[index];
        if (destination.name == nullptr || destination.instance != nullptr) continue;
        const char* makeAndModel =
            cups.getOption("printer-make-and-model", destination.num_options, destination.options);
        DictionaryRef printer = makeDictionary();
        printer->set("name", destination.name);
        printer->set("makeAndModel", makeAndModel != nullptr ? makeAndModel : "");
        printers->push_back(printer);
    }
    cups.freeDests(count, destinations);
    return printers;
}

}  // namespace tov
