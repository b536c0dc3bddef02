#include <cups/cups.h>

#include "platform/PosixFacts.h"

namespace tov {

// Every destination the printing system knows, without the saved instances of a
// destination (they are the same printer with other options).
Value printersFact(const std::string&) {
    cups_dest_t* destinations = nullptr;
    const int count = cupsGetDests2(CUPS_HTTP_DEFAULT, &destinations);
    ArrayRef printers = makeArray();
    for (int index = 0; index < count; ++index) {
        const cups_dest_t& destination = destinations[index];
        if (destination.name == nullptr || destination.instance != nullptr) continue;
        const char* makeAndModel =
            cupsGetOption("printer-make-and-model", destination.num_options, destination.options);
        DictionaryRef printer = makeDictionary();
        printer->set("name", destination.name);
        printer->set("makeAndModel", makeAndModel != nullptr ? makeAndModel : "");
        printers->push_back(printer);
    }
    cupsFreeDests(count, destinations);
    return printers;
}

}  // namespace tov
