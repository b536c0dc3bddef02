#pragma once

// Reads the contents of every file member of a ZIP archive, one after the other in archive
// order (as "unzip -p" prints them), a chunk at a time, so that no member has to be held
// in memory whole.

#include "common/LibZip.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tov {

class ZipMemberReader {
public:
    explicit ZipMemberReader(const std::string& path);

    // The archive could be opened (libzip loaded, the file a readable archive).
    bool isOpen() const { return archive_ != nullptr; }
    // Up to size bytes of the members' contents: the count, 0 after the last member,
    // -1 when the archive is not open or a member cannot be read.
    std::int64_t read(char* buffer, std::size_t size);

private:
    struct ArchiveCloser {
        void operator()(zip_t* archive) const { libZip()->discard(archive); }
    };
    struct MemberCloser {
        void operator()(zip_file_t* member) const { libZip()->fclose(member); }
    };

    // Opens the next member that is not a folder entry; false when none is left or it
    // cannot be opened (failed_ tells which).
    bool openNextMember();

    std::unique_ptr<zip_t, ArchiveCloser> archive_;
    std::unique_ptr<zip_file_t, MemberCloser> member_;
    zip_int64_t memberCount_ = 0;
    zip_int64_t nextIndex_ = 0;
    bool failed_ = false;
};

}  // namespace tov
