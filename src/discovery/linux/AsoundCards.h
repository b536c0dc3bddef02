#pragma once

// The sound cards ALSA lists in /proc/asound/cards: per card a line
// "N [id             ]: driver - Card Name" and an indented line with its long name.

#include <string>
#include <string_view>
#include <vector>

namespace tov {

struct AsoundCard {
    int number = 0;
    // The card's name: the text after " - " on its first line, trimmed.
    std::string name;
};

// The cards in listed order; lines of any other shape (the long names, "--- no
// soundcards ---", garbage) are passed over.
std::vector<AsoundCard> parseAsoundCards(std::string_view text);

}  // namespace tov
