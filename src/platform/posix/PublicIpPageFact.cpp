#include <curl/curl.h>

#include <string>

#include "common/NetworkUtils.h"
#include "common/QVSLogger.h"
#include "platform/PosixFacts.h"

namespace tov {
namespace {

// The lookup page is a short HTML page; anything longer is not it.
constexpr std::size_t kPageLimit = 1024 * 1024;
constexpr long kTimeLimitSeconds = 60;

std::size_t appendBody(char* data, std::size_t size, std::size_t count, void* target) {
    std::string& body = *static_cast<std::string*>(target);
    const std::size_t length = size * count;
    if (body.size() + length > kPageLimit) return 0;  // ends the transfer with an error
    body.append(data, length);
    return length;
}

// One GET; the libcurl result code (0 on success).
long fetch(const std::string& url, std::string& body) {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (initialised != CURLE_OK) return initialised;
    CURL* handle = curl_easy_init();
    if (handle == nullptr) return CURLE_FAILED_INIT;
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, kTimeLimitSeconds);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    const CURLcode result = curl_easy_perform(handle);
    curl_easy_cleanup(handle);
    return result;
}

}  // namespace

Value publicIpPageFact(const std::string& url) {
    if (!IsHostReachable(url.c_str())) {
        QVSLogger::debug("The public-IP lookup host of %s is not reachable.", url.c_str());
        return Value();
    }
    std::string body;
    DictionaryRef page = makeDictionary();
    if (const long code = fetch(url, body); code != 0) {
        page->set("errorCode", static_cast<std::int64_t>(code));
    } else {
        page->set("body", body);
    }
    return page;
}

}  // namespace tov
