// The standard headers most of tov's files include, parsed once per target as a
// precompiled header: in C++20 these alone take about two seconds to parse.
// Every file still includes what it uses; this list only saves the parsing.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>
