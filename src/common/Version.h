#pragma once

namespace tov {

// The version that the environment report and every report header carry.
constexpr const char* kTovVersion = "1.0.0.402";
// The component name of the report headers.
constexpr const char* kTovComponent = "TOV";

}  // namespace tov
