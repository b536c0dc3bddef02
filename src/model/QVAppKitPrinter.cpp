#include "model/QVAppKitPrinter.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kDriverKey = "driver";

}  // namespace

std::shared_ptr<QVAppKitPrinter> QVAppKitPrinter::appKitPrinter() { return std::make_shared<QVAppKitPrinter>(); }

std::optional<std::string> QVAppKitPrinter::name() const { return stringForKey(kNameKey); }
void QVAppKitPrinter::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVAppKitPrinter::driver() const { return stringForKey(kDriverKey); }
void QVAppKitPrinter::setDriver(std::optional<std::string_view> driver) { setStringValue(driver, kDriverKey); }

bool QVAppKitPrinter::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kNameKey) && stringEquals(other, kDriverKey);
}

}  // namespace tov
