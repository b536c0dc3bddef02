#include "common/QVFileUtilMessages.h"

namespace tov {
namespace {

std::string withErrorCode(const std::string& text, int errorNumber) {
    return text + ".  Error code = [" + std::to_string(errorNumber) + "]";
}

std::string notAccessible(const std::string& path, const std::string& reason) {
    return "[" + path + "] is not Accessible. " + reason;
}

}  // namespace

std::string QVFileUtilMessages::noPath() { return "No path was provided."; }

std::string QVFileUtilMessages::noItemAtPath() { return "No item exists at path."; }

std::string QVFileUtilMessages::illegalCharactersInPath() { return "The path may contain illegal characters."; }

std::string QVFileUtilMessages::ownerNotChanged(const std::string& path, int errorNumber) {
    return withErrorCode("Could not change the owner of [" + path + "]", errorNumber);
}

std::string QVFileUtilMessages::permissionsNotChanged(const std::string& path, int errorNumber) {
    return withErrorCode("Could not change the permissions of [" + path + "]", errorNumber);
}

std::string QVFileUtilMessages::illegalCharactersInCommand(const std::string& command) {
    return "The command [" + command + "] may contain illegal characters.";
}

std::string QVFileUtilMessages::groupNotChanged(const std::string& path, int errorNumber) {
    return withErrorCode("Failed to change the group to [" + path + "]", errorNumber);
}

std::string QVFileUtilMessages::doesNotExist(const std::string& path) {
    return notAccessible(path, "doesn't exist");
}

std::string QVFileUtilMessages::notADirectory(const std::string& path) { return notAccessible(path, "not dir"); }

std::string QVFileUtilMessages::groupIsNotWheel(const std::string& path, const std::string& attributes) {
    return notAccessible(path, "group name is not wheel. attributes: " + attributes);
}

std::string QVFileUtilMessages::ownerIsNotRoot(const std::string& path, const std::string& attributes) {
    return notAccessible(path, "owner name is not root. attributes: " + attributes);
}

}  // namespace tov
