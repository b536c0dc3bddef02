#include "common/ZipArchiveWriter.h"

#include <zip.h>

namespace tov {
namespace {

// Adds the one member to the archive kept in source; false when libzip refuses.
bool addMember(zip_source_t* target, const std::string& memberName, std::string_view contents) {
    zip_error_t error;
    zip_error_init(&error);
    zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_error_fini(&error);
    if (!archive) return false;
    // The buffer is only read by zip_close below, while contents is still alive.
    zip_source_t* member = zip_source_buffer(archive, contents.data(), contents.size(), 0);
    if (!member) {
        zip_discard(archive);
        return false;
    }
    if (zip_file_add(archive, memberName.c_str(), member, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) < 0) {
        zip_source_free(member);
        zip_discard(archive);
        return false;
    }
    if (zip_close(archive) != 0) {
        zip_discard(archive);
        return false;
    }
    return true;
}

std::optional<std::string> bytesOf(zip_source_t* source) {
    zip_stat_t status;
    zip_stat_init(&status);
    if (zip_source_stat(source, &status) != 0 || !(status.valid & ZIP_STAT_SIZE)) return std::nullopt;
    if (zip_source_open(source) != 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.size), '\0');
    const zip_int64_t read = zip_source_read(source, bytes.data(), bytes.size());
    zip_source_close(source);
    if (read < 0 || static_cast<zip_uint64_t>(read) != status.size) return std::nullopt;
    return bytes;
}

}  // namespace

std::optional<std::string> zipWithOneMember(const std::string& memberName, std::string_view contents) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_error_fini(&error);
    if (!target) return std::nullopt;
    zip_source_keep(target);  // the archive's close would otherwise free it
    std::optional<std::string> bytes;
    if (addMember(target, memberName, contents)) bytes = bytesOf(target);
    zip_source_free(target);
    return bytes;
}

}  // namespace tov
