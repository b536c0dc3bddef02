#pragma once

// Which sanitizer the tests were built with, for the few tests whose cost under one
// outweighs what it could find there.

namespace tov::testing {

#if defined(TOV_SANITIZED)
inline constexpr bool kSanitizedBuild = true;
#else
inline constexpr bool kSanitizedBuild = false;
#endif

#if defined(__SANITIZE_THREAD__)
inline constexpr bool kThreadSanitizerBuild = true;
#else
inline constexpr bool kThreadSanitizerBuild = false;
#endif

}  // namespace tov::testing
