#include <sys/sysctl.h>
#include <sys/time.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "common/StringData.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// How a kernel parameter's bytes read. The kernel's own type query (the {0,4} "oidfmt"
// name) is an undocumented interface that the kernel's comments ask to be removed, and
// sysctlbyname returns bytes without their type: the parameters the discoverers read are
// therefore listed here with their types, from the sysctl(3) manual and <sys/sysctl.h>;
// any other name is absent.
enum class Kind { SignedInteger, UnsignedInteger, Text, SwapUsage, BootTime };

struct Parameter {
    std::string_view name;
    Kind kind;
};

constexpr Parameter kParameters[] = {
    {"hw.machine", Kind::Text},
    {"hw.model", Kind::Text},
    {"machdep.cpu.brand_string", Kind::Text},
    {"hw.memsize", Kind::UnsignedInteger},
    {"hw.cpufrequency", Kind::UnsignedInteger},
    {"hw.logicalcpu", Kind::SignedInteger},
    {"hw.physicalcpu", Kind::SignedInteger},
    {"hw.cputype", Kind::SignedInteger},
    {"vm.swapusage", Kind::SwapUsage},
    {"kern.boottime", Kind::BootTime},
};

// A text parameter longer than this is no name or model.
constexpr std::size_t kMaximumTextBytes = 64 * 1024;
// A text may grow between measuring and reading; a few more tries cover that.
constexpr int kTextAttempts = 4;

const Parameter* parameterNamed(const std::string& name) {
    for (const Parameter& parameter : kParameters) {
        if (parameter.name == name) return &parameter;
    }
    return nullptr;
}

// Reads exactly the size of value; false when the parameter is missing or of another size.
template <typename Structure>
bool readStructure(const char* name, Structure& value) {
    std::size_t length = sizeof value;
    return sysctlbyname(name, &value, &length, nullptr, 0) == 0 && length == sizeof value;
}

// A 32-bit or 64-bit integer, signed or not as listed; the kernel's width decides which.
Value integerValue(const char* name, bool isSigned) {
    unsigned char bytes[sizeof(std::uint64_t)] = {};
    std::size_t length = sizeof bytes;
    if (sysctlbyname(name, bytes, &length, nullptr, 0) != 0) return Value();
    if (length == sizeof(std::uint32_t)) {
        std::uint32_t number = 0;
        std::memcpy(&number, bytes, sizeof number);
        if (isSigned) return Value(static_cast<std::int32_t>(number));
        return Value(number);
    }
    if (length == sizeof(std::uint64_t)) {
        std::uint64_t number = 0;
        std::memcpy(&number, bytes, sizeof number);
        if (isSigned) return Value(static_cast<std::int64_t>(number));
        return Value(number);
    }
    return Value();
}

// The bytes up to the first zero; absent when they are not UTF-8.
Value textValue(const char* name) {
    for (int attempt = 0; attempt < kTextAttempts; ++attempt) {
        std::size_t length = 0;
        if (sysctlbyname(name, nullptr, &length, nullptr, 0) != 0 || length > kMaximumTextBytes) return Value();
        std::vector<char> bytes(length + 1, '\0');
        std::size_t read = length;
        if (sysctlbyname(name, bytes.data(), &read, nullptr, 0) != 0) {
            if (errno == ENOMEM) continue;
            return Value();
        }
        const std::string text(bytes.data(), strnlen(bytes.data(), read));
        if (!text.empty() && !isValidStringData(text)) return Value();
        return Value(text);
    }
    return Value();
}

Value swapUsageValue(const char* name) {
    struct xsw_usage usage {};
    if (!readStructure(name, usage)) return Value();
    DictionaryRef fact = makeDictionary();
    fact->set("total", static_cast<std::uint64_t>(usage.xsu_total));
    fact->set("available", static_cast<std::uint64_t>(usage.xsu_avail));
    fact->set("used", static_cast<std::uint64_t>(usage.xsu_used));
    fact->set("pageSize", static_cast<std::uint64_t>(usage.xsu_pagesize));
    fact->set("encrypted", static_cast<std::int64_t>(usage.xsu_encrypted));
    return fact;
}

Value bootTimeValue(const char* name) {
    struct timeval boot {};
    if (!readStructure(name, boot)) return Value();
    DictionaryRef fact = makeDictionary();
    fact->set("seconds", static_cast<std::int64_t>(boot.tv_sec));
    fact->set("microseconds", static_cast<std::int64_t>(boot.tv_usec));
    return fact;
}

Value valueOf(const Parameter& parameter) {
    const std::string name(parameter.name);
    switch (parameter.kind) {
        case Kind::SignedInteger: return integerValue(name.c_str(), true);
        case Kind::UnsignedInteger: return integerValue(name.c_str(), false);
        case Kind::Text: return textValue(name.c_str());
        case Kind::SwapUsage: return swapUsageValue(name.c_str());
        case Kind::BootTime: return bootTimeValue(name.c_str());
    }
    return Value();
}

}  // namespace

Value sysctlFact(const std::string& name) {
    const Parameter* parameter = parameterNamed(name);
    if (parameter == nullptr) {
        QVSLogger::debug("The kernel parameter \"%s\" is not one the discoverers read.", name.c_str());
        return Value();
    }
    errno = 0;
    Value value = valueOf(*parameter);
    if (value.isAbsent()) {
        QVSLogger::debug("The kernel parameter %s cannot be read (%s).", name.c_str(),
                         errno != 0 ? std::strerror(errno) : "unexpected size or text");
    }
    return value;
}

}  // namespace tov
