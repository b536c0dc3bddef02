#pragma once

// CoreFoundation objects as value trees, the one conversion every macOS adapter uses,
// giving the shapes the property-list reader (common/PropertyList.h) gives, so live facts
// and recorded ones have one shape: dictionaries keep their string keys, arrays their
// order; an integer is a signed 64-bit number (CoreFoundation has no unsigned kind: the
// registry's unsigned numbers above the signed range come negative) and a float a double;
// a boolean stays a boolean; a string is its UTF-8 text up to its first zero character;
// data becomes an array of its bytes (0 to 255) and a date its UTC text
// "yyyy-MM-ddTHH:mm:ssZ". A CFDictionary has no order of its own: its entries are written
// in the order of their keys' UTF-8 text, so one object always gives the same tree and
// the same bytes.

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
// container, the elements of such types (and entries whose key is not a string) are left
// out. The tree is bounded as the property-list reader bounds a list (nodes, nesting,
// string and data bytes, PropertyListLimits' defaults): beyond a bound it is absent as a
// whole.
Value valueOfCFType(CFTypeRef object);

// The UTF-8 text of a string, zero characters included; nullopt for null, for an object
// that is not a string, or when CoreFoundation cannot convert the string to UTF-8.
std::optional<std::string> stringOfCFString(CFTypeRef object);

// A new string of UTF-8 text (owned by the caller); null when the bytes are not UTF-8.
OwnedCFReference<CFStringRef> cfStringOfText(const std::string& text);

}  // namespace tov
