#include "app/QVDaemonPlistGenerator.h"

#include "app/QVDaemonInstaller.h"
#include "app/WholeSeconds.h"

namespace tov {
namespace {

// Character data of an XML element: the three characters that could end or open markup.
std::string xmlEscaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            default: escaped += character;
        }
    }
    return escaped;
}

std::string line(const std::string& text) { return text + "\n"; }

}  // namespace

std::string QVDaemonPlistGenerator::generatePlistWithExecutionInterval(double interval, bool runAtLoad) {
    return generatePlist(QVDaemonInstaller::kDaemonLabel, kProgramPath, interval, runAtLoad);
}

std::string QVDaemonPlistGenerator::generatePlist(const std::string& label, const std::string& programPath,
                                                  double interval, bool runAtLoad) {
    std::string text;
    text += line(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    text += line(R"(<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">)");
    text += line(R"(<plist version="1.0">)");
    text += line("<dict>");
    text += line("\t<key>Label</key>");
    text += line("\t<string>" + xmlEscaped(label) + "</string>");
    text += line("\t<key>ProgramArguments</key>");
    text += line("\t<array>");
    text += line("\t\t<string>" + xmlEscaped(programPath) + "</string>");
    text += line("\t</array>");
    text += line("\t<key>Nice</key>");
    text += line("\t<integer>1</integer>");
    if (runAtLoad) {
        text += line("\t<key>RunAtLoad</key>");
        text += line("\t<true/>");
    }
    text += line("\t<key>StartInterval</key>");
    text += line("\t<integer>" + std::to_string(wholeSeconds(interval)) + "</integer>");
    text += line("</dict>");
    text += line("</plist>");
    return text;
}

}  // namespace tov
