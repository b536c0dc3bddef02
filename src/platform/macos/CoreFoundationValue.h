#pragma once

// CoreFoundation objects as value trees, the one conversion every macOS adapter uses:
// dictionaries keep their string keys, arrays their order, a number is signed, unsigned
// or a double as CoreFoundation stores it, a boolean stays a boolean, data becomes an
// array of its bytes (0 to 255) and a date its UTC text "yyyy-MM-ddTHH:mm:ssZ", as the
// property-list reader gives them, so live facts and recorded ones have one shape.

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>

#include "model/Value.h"

namespace tov {

// Releases a CoreFoundation object obtained under the Create or Copy rule.
template <typename Reference>
class OwnedCFReference {
public:
    OwnedCFReference() = default;
    explicit OwnedCFReference(Reference reference) : reference_(reference) {}
    OwnedCFReference(const OwnedCFReference&) = delete;
    OwnedCFReference& operator=(const OwnedCFReference&) = delete;
    OwnedCFReference(OwnedCFReference&& other) noexcept : reference_(other.reference_) { other.reference_ = nullptr; }
    OwnedCFReference& operator=(OwnedCFReference&& other) noexcept {
        if (this != &other) {
            reset();
            reference_ = other.reference_;
            other.reference_ = nullptr;
        }
        return *this;
    }
    ~OwnedCFReference() { reset(); }

    Reference get() const { return reference_; }
    explicit operator bool() const { return reference_ != nullptr; }
    void reset() {
        if (reference_ != nullptr) CFRelease(reference_);
        reference_ = nullptr;
    }

private:
    Reference reference_ = nullptr;
};

// The tree of any property-list type; absent for a type outside them (or null), and for a
// container, the elements of such types are left out. Depth and element counts are bounded.
Value valueOfCFType(CFTypeRef object);

// The UTF-8 text of a string; nullopt for null or for an object that is not a string.
std::optional<std::string> stringOfCFString(CFTypeRef object);

// A new string of UTF-8 text (owned by the caller); null when the bytes are not UTF-8.
OwnedCFReference<CFStringRef> cfStringOfText(const std::string& text);

}  // namespace tov
