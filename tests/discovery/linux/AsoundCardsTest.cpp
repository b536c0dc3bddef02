#include "discovery/linux/AsoundCards.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

std::vector<std::pair<int, std::string>> cardsOf(std::string_view text) {
    std::vector<std::pair<int, std::string>> cards;
    for (const AsoundCard& card : parseAsoundCards(text)) cards.emplace_back(card.number, card.name);
    return cards;
}

using Cards = std::vector<std::pair<int, std::string>>;

TEST(AsoundCards, EachCardLineGivesItsNumberAndName) {
    const char* text =
        " 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n"
        "                      HDA Intel PCH at 0x603f1f0000 irq 171\n"
        " 1 [H390           ]: USB-Audio - Logitech USB Headset H390\n"
        "                      Logitech Logitech USB Headset H390 at usb-0000:00:14.0-3, full speed\n";
    EXPECT_EQ(cardsOf(text), (Cards{{0, "HDA Intel PCH"}, {1, "Logitech USB Headset H390"}}));
}

TEST(AsoundCards, TwoDigitNumbersAndNamesWithDashes) {
    EXPECT_EQ(cardsOf("10 [Loopback       ]: Loopback - Loopback - Virtual\n"), (Cards{{10, "Loopback - Virtual"}}));
}

TEST(AsoundCards, NoCardsOrOtherTextGiveNone) {
    EXPECT_TRUE(cardsOf("--- no soundcards ---\n").empty());
    EXPECT_TRUE(cardsOf("").empty());
    EXPECT_TRUE(cardsOf("\x01\xff garbage\n 0 [X]\n 1 [Y   ]: no separator\n12345 [Z ]: d - n\n").empty());
    EXPECT_TRUE(cardsOf("   \n\n x [ID ]: d - n\n").empty());
}

TEST(AsoundCards, AFileWithoutItsLastNewlineKeepsItsLastCard) {
    EXPECT_EQ(cardsOf(" 0 [Headphones     ]: bcm2835_headpho - bcm2835 Headphones"),
              (Cards{{0, "bcm2835 Headphones"}}));
}

}  // namespace
}  // namespace tov
