#pragma once

// Whole-file reads and writes for the daemon's own files. Writes go to a fresh file in
// the same folder that is then renamed over the target, so a reader never meets half a
// file and a planted symbolic link is replaced rather than followed; reads never follow a
// symbolic link. Failures carry the error codes that the log lines quote.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

struct FileErrorCode {
    static constexpr int kNoSuchFile = 4;
    static constexpr int kReadUnknown = 256;
    static constexpr int kReadNoPermission = 257;
    static constexpr int kReadNoSuchFile = 260;
    static constexpr int kReadTooLarge = 263;
    static constexpr int kWriteUnknown = 512;
    static constexpr int kWriteNoPermission = 513;
    static constexpr int kWriteOutOfSpace = 640;
    static constexpr int kWriteVolumeReadOnly = 642;
};

// Something (a file, folder or symbolic link) stands at path; a link is not followed.
bool itemExists(const std::string& path);
// A regular file stands at path itself (a symbolic link to one does not count).
bool isRegularFileItem(const std::string& path);

// The size of the regular file at path (a symbolic link is not followed); 0 when there is
// none.
std::uint64_t regularFileSize(const std::string& path);

// The bytes of the regular file at path. Nothing, with the code in errorCode when given,
// when there is no such file, it is a symbolic link or not a regular file, it cannot be
// read, or it holds more than maximumBytes.
std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t maximumBytes,
                                         int* errorCode = nullptr);

// Replaces the file at path by bytes, mode 0600, through a fresh file and a rename; the
// data is flushed to disk before the rename. False, with the code in errorCode when given
// and the cause in errno, when any step fails; the old file is then left as it was.
bool writeFileAtomically(const std::string& path, std::string_view bytes, int* errorCode = nullptr);

// Moves the file at source to destination, which must not exist yet (an existing file
// there is kept and the move fails). Across file systems the bytes are copied into a fresh
// file beside destination first, so destination appears whole or not at all.
bool moveFileWithoutReplacing(const std::string& source, const std::string& destination);

// Removes a file or symbolic link at path (never a folder's contents); true when nothing
// is there afterwards.
bool removeFile(const std::string& path);

// readWholeFile for the entry name of the folder open at folder.
std::optional<std::string> readWholeFileAt(int folder, const std::string& name, std::uint64_t maximumBytes,
                                           int* errorCode = nullptr);

// Creates the entry name of the folder open at folder as a new file (mode 0600 from the
// start; an existing entry or a link there makes it fail), writes bytes and flushes them to
// disk. On failure errno tells why and no file of that name is left behind.
bool writeNewFileAt(int folder, const std::string& name, std::string_view bytes);

// removeItemWithoutFollowing for the entry name of the folder open at folder.
bool removeItemAt(int folder, const std::string& name);

// Removes whatever stands at path: a file, a symbolic link (not what it points to) or a
// folder with everything in it, never following a link on the way. True when nothing is
// there afterwards; a folder nested deeper than a few hundred levels is left in place.
bool removeItemWithoutFollowing(const std::string& path);

// The file-write error code (FileErrorCode) of an errno value.
int fileWriteErrorCode(int error);

}  // namespace tov
