#include "discovery/QVAppKitHardwareInfoDiscoverer.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/SystemFacts.h"
#include "model/QVAppKitPrinter.h"

namespace tov {
namespace {

// The printing system's names are whatever an administrator typed: reported printable.
std::optional<std::string> textUnder(const Dictionary& entry, std::string_view key) {
    const Value* value = entry.find(key);
    if (!value || !value->isString()) return std::nullopt;
    return printableText(*value->string());
}

// The printer of one destination entry; nothing for an entry without a name.
std::shared_ptr<QVAppKitPrinter> printerOf(const Value& entry) {
    const DictionaryRef destination = entry.dictionary();
    const std::optional<std::string> name = destination ? textUnder(*destination, "name") : std::nullopt;
    if (!name) {
        QVSLogger::debug("A printer destination without a name is left out.");
        return nullptr;
    }
    const std::shared_ptr<QVAppKitPrinter> printer = QVAppKitPrinter::appKitPrinter();
    printer->setName(*name);
    printer->setDriver(textUnder(*destination, "makeAndModel"));
    return printer;
}

bool byNameThenDriver(const std::shared_ptr<QVAppKitPrinter>& left, const std::shared_ptr<QVAppKitPrinter>& right) {
    return std::make_pair(left->name().value_or(""), left->driver().value_or("")) <
           std::make_pair(right->name().value_or(""), right->driver().value_or(""));
}

}  // namespace

QVAppKitHardwareInfoDiscoverer::QVAppKitHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef QVAppKitHardwareInfoDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kPrintersKey, discoverPrinters());
    return section;
}

ArrayRef QVAppKitHardwareInfoDiscoverer::discoverPrinters() {
    const Value destinations = source_->fact(facts::kPrinters);
    if (!destinations.isArray()) {
        QVSLogger::debug("The printing system lists no printers.");
        return makeArray();
    }
    std::vector<std::shared_ptr<QVAppKitPrinter>> printers;
    for (const Value& entry : *destinations.array()) {
        if (std::shared_ptr<QVAppKitPrinter> printer = printerOf(entry)) printers.push_back(std::move(printer));
    }
    std::stable_sort(printers.begin(), printers.end(), byNameThenDriver);
    return equalRecordsOnce(printers);
}

}  // namespace tov
