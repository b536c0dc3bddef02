#include "app/QVSAppArgument.h"

#include "common/TextUtils.h"

namespace tov {
namespace {

std::vector<std::string> argumentsAfterProgramPath(int argc, const char* const* argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i] ? argv[i] : "");
    return arguments;
}

// The pieces of text between its "=" signs, empty ones included.
std::vector<std::string> splitAtEquals(const std::string& text) {
    std::vector<std::string> pieces;
    std::string::size_type start = 0;
    for (;;) {
        const auto equals = text.find('=', start);
        pieces.push_back(text.substr(start, equals - start));
        if (equals == std::string::npos) return pieces;
        start = equals + 1;
    }
}

}  // namespace

QVSAppArgument::QVSAppArgument(int argc, const char* const* argv)
    : arguments_(argumentsAfterProgramPath(argc, argv)) {}

QVSAppArgument::QVSAppArgument(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

bool QVSAppArgument::isEnvironmentCall() const { return containsEither("-e", "e"); }
bool QVSAppArgument::isInstallationCall() const { return containsEither("-i", "i"); }
bool QVSAppArgument::isUninstallationCall() const { return containsEither("-u", "u"); }
bool QVSAppArgument::isPrintCall() const { return containsEither("-p", "p"); }
bool QVSAppArgument::isSummaryCall() const { return containsEither("-s", "s"); }

bool QVSAppArgument::containArgumentFlag(const std::string& flag) const {
    for (const std::string& argument : arguments_) {
        if (equalsIgnoringCase(argument, flag)) return true;
    }
    return false;
}

bool QVSAppArgument::containsEither(const char* shortForm, const char* bareForm) const {
    return containArgumentFlag(shortForm) || containArgumentFlag(bareForm);
}

std::optional<std::string> QVSAppArgument::logLevel() const {
    bool pending = false;
    for (const std::string& argument : arguments_) {
        if (hasPrefix(argument, "-ll=")) return argument.substr(4);
        if (hasPrefix(argument, "ll=")) return argument.substr(3);
        if (equalsIgnoringCase(argument, "ll") || equalsIgnoringCase(argument, "-ll")) {
            pending = true;
        } else if (pending) {
            return argument;
        }
    }
    return std::nullopt;
}

std::optional<std::string> QVSAppArgument::findArgumentAfterOptionFlag(const std::string& flag) const {
    bool pending = false;
    for (const std::string& argument : arguments_) {
        if (equalsIgnoringCase(argument, flag)) {
            pending = true;
        } else if (hasPrefix(argument, flag)) {
            const std::vector<std::string> pieces = splitAtEquals(argument);
            if (pieces.size() < 2 || !equalsIgnoringCase(trimWhitespaceAndNewlines(pieces.front()), flag)) continue;
            std::string value;
            for (std::size_t i = 1; i < pieces.size(); ++i) value += pieces[i];
            return value;
        } else if (pending) {
            return argument;
        }
    }
    return std::nullopt;
}

}  // namespace tov
