#include "common/StringData.h"

#include <unicode/ustring.h>

#include <exception>
#include <string>

namespace tov {

bool isValidStringData(std::string_view bytes) {
    if (bytes.empty()) return false;
    try {
        // One zero byte more than the data, so the text always ends.
        std::string terminated(bytes.size() + 1, '\0');
        terminated.replace(0, bytes.size(), bytes);
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = 0;
        // Measuring only: ICU validates the whole text and reports its UTF-16 length.
        u_strFromUTF8(nullptr, 0, &length, terminated.c_str(), -1, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING) status = U_ZERO_ERROR;
        return U_SUCCESS(status) && length > 0;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace tov
