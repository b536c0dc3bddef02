#include "common/ZipArchiveWriter.h"

#include <zip.h>

namespace tov {

bool writeZipWithOneMember(const std::string& archivePath, const std::string& memberName, std::string_view contents) {
    int error = 0;
    zip_t* archive = zip_open(archivePath.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!archive) return false;
    // The buffer is only read by zip_close below, while contents is still alive.
    zip_source_t* source = zip_source_buffer(archive, contents.data(), contents.size(), 0);
    if (!source) {
        zip_discard(archive);
        return false;
    }
    if (zip_file_add(archive, memberName.c_str(), source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) < 0) {
        zip_source_free(source);
        zip_discard(archive);
        return false;
    }
    if (zip_close(archive) != 0) {
        zip_discard(archive);
        return false;
    }
    return true;
}

}  // namespace tov
