#include "app/SystemdUnitText.h"

#include <cstdio>

#include "app/WholeSeconds.h"

namespace tov {
namespace {

// "%" starts a specifier in every unit setting.
std::string withoutSpecifiers(const std::string& text) {
    std::string result;
    for (const char character : text) {
        result += character;
        if (character == '%') result += '%';
    }
    return result;
}

bool isControlCharacter(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

// A setting's value ends with its line: control characters become blanks.
std::string oneLine(const std::string& text) {
    std::string result;
    for (const char character : text) result += isControlCharacter(character) ? ' ' : character;
    return result;
}

std::string hexEscape(char character) {
    char text[5];
    std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(character)));
    return text;
}

// Text inside double quotes, as systemd unquotes and C-unescapes it.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '\\' || character == '"') {
            result += '\\';
            result += character;
        } else if (isControlCharacter(character)) {
            result += hexEscape(character);
        } else {
            result += character;
        }
    }
    return result + "\"";
}

}  // namespace

std::string systemdExecutableWord(const std::string& programPath) {
    const std::string prefix = programPath.find('$') == std::string::npos ? "" : ":";
    return prefix + quoted(withoutSpecifiers(programPath));
}

std::string systemdUnitText(const std::string& label, const std::string& programPath, double interval,
                            bool runAtLoad) {
    std::string text;
    text += "[Unit]\n";
    text += "Description=" + oneLine(withoutSpecifiers(label)) + "\n";
    text += "\n";
    text += "[Service]\n";
    text += "ExecStart=" + systemdExecutableWord(programPath) + "\n";
    text += "Nice=1\n";
    text += "Restart=always\n";
    text += "RestartSec=" + std::to_string(wholeSeconds(interval)) + "\n";
    if (runAtLoad) {
        text += "\n";
        text += "[Install]\n";
        text += "WantedBy=multi-user.target\n";
    }
    return text;
}

}  // namespace tov
