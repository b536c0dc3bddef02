#pragma once

// The "appkit" section: the printers the printing system knows, as
// { "printers": [QVAppKitPrinter ...] } with name = the printer's name and driver = its
// make and model. Equal printers appear once; the printing system gives no order, so
// they are sorted by name (then driver) and the same printers always give the same bytes.

#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVAppKitHardwareInfoDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kPrintersKey = "printers";

    explicit QVAppKitHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return "appkit"; }
    DictionaryRef discoverInfo() override;

    ArrayRef discoverPrinters();

private:
    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
