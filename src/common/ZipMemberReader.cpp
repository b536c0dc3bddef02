#include "common/ZipMemberReader.h"

namespace tov {
namespace {

bool isFolderEntry(zip_t* archive, zip_int64_t index) {
    const char* name = libZip()->getName(archive, static_cast<zip_uint64_t>(index), 0);
    const std::string memberName = name ? name : "";
    return !memberName.empty() && memberName.back() == '/';
}

}  // namespace

ZipMemberReader::ZipMemberReader(const std::string& path) {
    const LibZip* zip = libZip();
    if (zip == nullptr) return;
    int error = 0;
    archive_.reset(zip->open(path.c_str(), ZIP_RDONLY, &error));
    if (archive_) memberCount_ = zip->getNumEntries(archive_.get(), 0);
}

std::int64_t ZipMemberReader::read(char* buffer, std::size_t size) {
    if (!archive_ || failed_) return -1;
    for (;;) {
        if (!member_ && !openNextMember()) return failed_ ? -1 : 0;
        const zip_int64_t count = libZip()->fread(member_.get(), buffer, size);
        if (count < 0) {
            failed_ = true;
            return -1;
        }
        if (count > 0) return count;
        member_.reset();
    }
}

bool ZipMemberReader::openNextMember() {
    while (nextIndex_ < memberCount_ && isFolderEntry(archive_.get(), nextIndex_)) ++nextIndex_;
    if (nextIndex_ >= memberCount_) return false;
    member_.reset(libZip()->fopenIndex(archive_.get(), static_cast<zip_uint64_t>(nextIndex_++), 0));
    failed_ = member_ == nullptr;
    return !failed_;
}

}  // namespace tov
