#include "common/ZipMembers.h"

#include <zip.h>

#include <memory>

namespace tov {
namespace {

struct ArchiveCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct MemberCloser {
    void operator()(zip_file_t* member) const { zip_fclose(member); }
};

bool appendMember(zip_t* archive, zip_uint64_t index, std::uint64_t maximumBytes, std::string& contents) {
    std::unique_ptr<zip_file_t, MemberCloser> member(zip_fopen_index(archive, index, 0));
    if (!member) return false;
    char buffer[64 * 1024];
    for (;;) {
        const zip_int64_t count = zip_fread(member.get(), buffer, sizeof buffer);
        if (count < 0) return false;
        if (count == 0) return true;
        if (contents.size() + static_cast<std::uint64_t>(count) > maximumBytes) return false;
        contents.append(buffer, static_cast<std::size_t>(count));
    }
}

}  // namespace

std::optional<std::string> readZipMembers(const std::string& path, std::uint64_t maximumBytes) {
    int error = 0;
    std::unique_ptr<zip_t, ArchiveCloser> archive(zip_open(path.c_str(), ZIP_RDONLY, &error));
    if (!archive) return std::nullopt;
    std::string contents;
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        const char* name = zip_get_name(archive.get(), static_cast<zip_uint64_t>(index), 0);
        const std::string memberName = name ? name : "";
        if (!memberName.empty() && memberName.back() == '/') continue;  // a folder entry
        if (!appendMember(archive.get(), static_cast<zip_uint64_t>(index), maximumBytes, contents)) {
            return std::nullopt;
        }
    }
    return contents;
}

}  // namespace tov
