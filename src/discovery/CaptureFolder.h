#pragma once

// The layout of a capture folder: what a scan read on one machine, so that the machine's
// inventory can be reproduced anywhere.
//   DIR/platform        one word: linux | macos
//   DIR/files/...       the files read, at their own paths; folders as folders, symbolic
//                       links as symbolic links
//   DIR/commands/N.argv a tool run's argument vector as a JSON array of strings, and
//   DIR/commands/N.out  its standard output byte for byte (no .out: it could not start)
//   DIR/facts.json      native facts: { "<name> <key>": tree, ... }

#include <cstdint>
#include <string>

namespace tov::capture {

inline constexpr const char* kPlatformFile = "platform";
inline constexpr const char* kFilesFolder = "files";
inline constexpr const char* kCommandsFolder = "commands";
inline constexpr const char* kFactsFile = "facts.json";
inline constexpr const char* kArgumentsExtension = ".argv";
inline constexpr const char* kOutputExtension = ".out";

// Size bounds of the capture's own files.
inline constexpr std::uint64_t kPlatformFileLimit = 64;
inline constexpr std::uint64_t kArgumentsFileLimit = 64 * 1024;
inline constexpr std::uint64_t kOutputFileLimit = 64 * 1024 * 1024;
inline constexpr std::uint64_t kFactsFileLimit = 16 * 1024 * 1024;

// The key of a fact in facts.json.
inline std::string factKey(const std::string& name, const std::string& key) { return name + " " + key; }

}  // namespace tov::capture
