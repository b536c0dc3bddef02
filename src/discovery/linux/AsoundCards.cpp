#include "discovery/linux/AsoundCards.h"

#include <optional>

#include "common/PrintableText.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

// ALSA numbers cards from 0 to a few dozen; more digits are no card line.
constexpr std::size_t kMaximumNumberDigits = 4;

std::optional<AsoundCard> cardOfLine(std::string_view line) {
    const std::size_t first = line.find_first_not_of(' ');
    if (first == std::string_view::npos) return std::nullopt;
    line.remove_prefix(first);
    const std::size_t digits = line.find_first_not_of("0123456789");
    if (digits == 0 || digits == std::string_view::npos || digits > kMaximumNumberDigits) return std::nullopt;
    if (!hasPrefix(line.substr(digits), " [")) return std::nullopt;
    const std::size_t idEnd = line.find("]: ", digits);
    if (idEnd == std::string_view::npos) return std::nullopt;
    const std::string_view driverAndName = line.substr(idEnd + 3);
    const std::size_t separator = driverAndName.find(" - ");
    if (separator == std::string_view::npos) return std::nullopt;
    AsoundCard card;
    card.number = static_cast<int>(leadingIntegerValue(line.substr(0, digits)));
    card.name = printableText(driverAndName.substr(separator + 3));
    return card;
}

}  // namespace

std::vector<AsoundCard> parseAsoundCards(std::string_view text) {
    std::vector<AsoundCard> cards;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (std::optional<AsoundCard> card = cardOfLine(text.substr(0, end))) cards.push_back(std::move(*card));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return cards;
}

}  // namespace tov
