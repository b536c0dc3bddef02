#include "model/UtcDateText.h"

#include <cstdio>

namespace tov {
namespace {

using namespace std::chrono;

constexpr std::size_t kUtcDateLength = 20;  // 2023-11-02T07:45:10Z

// The unsigned decimal number written with exactly count digits at position start.
std::optional<int> fixedDigits(std::string_view text, std::size_t start, std::size_t count) {
    int number = 0;
    for (std::size_t i = start; i < start + count; ++i) {
        const char digit = text[i];
        if (digit < '0' || digit > '9') return std::nullopt;
        number = number * 10 + (digit - '0');
    }
    return number;
}

bool hasSeparators(std::string_view text) {
    return text[4] == '-' && text[7] == '-' && text[10] == 'T' && text[13] == ':' && text[16] == ':' &&
           text[19] == 'Z';
}

}  // namespace

std::string formatUtcDate(system_clock::time_point instant) {
    const auto wholeSeconds = floor<seconds>(instant);
    const auto midnight = floor<days>(wholeSeconds);
    const year_month_day date{midnight};
    const hh_mm_ss time{wholeSeconds - midnight};
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::optional<system_clock::time_point> parseUtcDate(std::string_view text) {
    if (text.size() != kUtcDateLength || !hasSeparators(text)) return std::nullopt;
    const auto yearNumber = fixedDigits(text, 0, 4);
    const auto monthNumber = fixedDigits(text, 5, 2);
    const auto dayNumber = fixedDigits(text, 8, 2);
    const auto hourNumber = fixedDigits(text, 11, 2);
    const auto minuteNumber = fixedDigits(text, 14, 2);
    const auto secondNumber = fixedDigits(text, 17, 2);
    if (!yearNumber || !monthNumber || !dayNumber || !hourNumber || !minuteNumber || !secondNumber) {
        return std::nullopt;
    }
    const year_month_day date{year{*yearNumber}, month{static_cast<unsigned>(*monthNumber)},
                              day{static_cast<unsigned>(*dayNumber)}};
    if (!date.ok() || *hourNumber > 23 || *minuteNumber > 59 || *secondNumber > 59) return std::nullopt;
    return sys_days{date} + hours{*hourNumber} + minutes{*minuteNumber} + seconds{*secondNumber};
}

}  // namespace tov
