// Hands arbitrary bytes to the stored-report reader as if they were a previous report on
// disk. Whatever it reads back must be writable again, and what is written must read back.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "report/QVHardwareReportJsonReader.h"
#include "report/QVHardwareReportJsonWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using tov::QVHardwareReportJsonReader;
    using tov::QVHardwareReportJsonWriter;

    const std::string_view content(reinterpret_cast<const char*>(data), size);
    const tov::DictionaryRef inventory = QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(content);
    if (!inventory) return 0;

    const std::optional<std::string> written = QVHardwareReportJsonWriter::jsonContentOfHardware(inventory);
    if (!written) std::abort();
    if (!QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(*written)) std::abort();
    return 0;
}
