#include "common/ZipArchiveWriter.h"

#include "common/LibZip.h"

namespace tov {
namespace {

// Adds the one member to the archive kept in source; false when libzip refuses.
bool addMember(const LibZip& zip, zip_source_t* target, const std::string& memberName, std::string_view contents) {
    zip_error_t error;
    zip.errorInit(&error);
    zip_t* archive = zip.openFromSource(target, ZIP_TRUNCATE, &error);
    zip.errorFini(&error);
    if (!archive) return false;
    // The buffer is only read by zip_close below, while contents is still alive.
    zip_source_t* member = zip.sourceBuffer(archive, contents.data(), contents.size(), 0);
    if (!member) {
        zip.discard(archive);
        return false;
    }
    if (zip.fileAdd(archive, memberName.c_str(), member, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) < 0) {
        zip.sourceFree(member);
        zip.discard(archive);
        return false;
    }
    if (zip.close(archive) != 0) {
        zip.discard(archive);
        return false;
    }
    return true;
}

std::optional<std::string> bytesOf(const LibZip& zip, zip_source_t* source) {
    zip_stat_t status;
    zip.statInit(&status);
    if (zip.sourceStat(source, &status) != 0 || !(status.valid & ZIP_STAT_SIZE)) return std::nullopt;
    if (zip.sourceOpen(source) != 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.size), '\0');
    const zip_int64_t read = zip.sourceRead(source, bytes.data(), bytes.size());
    zip.sourceClose(source);
    if (read < 0 || static_cast<zip_uint64_t>(read) != status.size) return std::nullopt;
    return bytes;
}

}  // namespace

std::optional<std::string> zipWithOneMember(const std::string& memberName, std::string_view contents) {
    const LibZip* library = libZip();
    if (library == nullptr) return std::nullopt;
    const LibZip& zip = *library;
    zip_error_t error;
    zip.errorInit(&error);
    zip_source_t* target = zip.sourceBufferCreate(nullptr, 0, 0, &error);
    zip.errorFini(&error);
    if (!target) return std::nullopt;
    zip.sourceKeep(target);  // the archive's close would otherwise free it
    std::optional<std::string> bytes;
    if (addMember(zip, target, memberName, contents)) bytes = bytesOf(zip, target);
    zip.sourceFree(target);
    return bytes;
}

}  // namespace tov
