#pragma once

// The identifier of the running process.

namespace tov {

long currentProcessId();

}  // namespace tov
