#include <curl/curl.h>

#include <string>

#include "common/NetworkUtils.h"
#include "common/QVSLogger.h"
#include "common/SharedLibrary.h"
#include "platform/PosixFacts.h"

namespace tov {
namespace {

// The lookup page is a short HTML page; anything longer is not it.
constexpr std::size_t kPageLimit = 1024 * 1024;
constexpr long kTimeLimitSeconds = 60;

#ifdef __APPLE__
constexpr const char* kCurlLibrary = "libcurl.4.dylib";
#else
constexpr const char* kCurlLibrary = "libcurl.so.4";
#endif

// libcurl and the dozen libraries it brings (TLS, LDAP, SSH ...) are loaded only when a
// lookup page is configured and its host is reachable, so a daemon without one never maps
// them.
struct Curl {
    decltype(&curl_global_init) globalInit = nullptr;
    decltype(&curl_easy_init) easyInit = nullptr;
    decltype(&curl_easy_setopt) easySetopt = nullptr;
    decltype(&curl_easy_perform) easyPerform = nullptr;
    decltype(&curl_easy_cleanup) easyCleanup = nullptr;
    bool ready = false;
};

Curl loadCurl() {
    Curl curl;
    std::string reason;
    void* library = openSharedLibrary(kCurlLibrary, reason);
    if (library == nullptr) {
        QVSLogger::warning("The public IP cannot be looked up: %s cannot be loaded (%s).", kCurlLibrary,
                           reason.c_str());
        return curl;
    }
    curl.ready = bindSymbol(library, "curl_global_init", curl.globalInit) && bindSymbol(library, "curl_easy_init", curl.easyInit) &&
                 bindSymbol(library, "curl_easy_setopt", curl.easySetopt) &&
                 bindSymbol(library, "curl_easy_perform", curl.easyPerform) &&
                 bindSymbol(library, "curl_easy_cleanup", curl.easyCleanup) &&
                 curl.globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!curl.ready) QVSLogger::warning("The public IP cannot be looked up: %s is not usable.", kCurlLibrary);
    return curl;
}

const Curl& curlLibrary() {
    static const Curl curl = loadCurl();
    return curl;
}

std::size_t appendBody(char* data, std::size_t size, std::size_t count, void* target) {
    std::string& body = *static_cast<std::string*>(target);
    const std::size_t length = size * count;
    if (body.size() + length > kPageLimit) return 0;  // ends the transfer with an error
    body.append(data, length);
    return length;
}

// One GET; the libcurl result code (0 on success).
long fetch(const std::string& url, std::string& body) {
    const Curl& curl = curlLibrary();
    if (!curl.ready) return CURLE_FAILED_INIT;
    CURL* handle = curl.easyInit();
    if (handle == nullptr) return CURLE_FAILED_INIT;
    curl.easySetopt(handle, CURLOPT_URL, url.c_str());
    curl.easySetopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl.easySetopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl.easySetopt(handle, CURLOPT_TIMEOUT, kTimeLimitSeconds);
    curl.easySetopt(handle, CURLOPT_WRITEFUNCTION, appendBody);
    curl.easySetopt(handle, CURLOPT_WRITEDATA, &body);
    const CURLcode result = curl.easyPerform(handle);
    curl.easyCleanup(handle);
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
