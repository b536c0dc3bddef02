#include "support/ReportSchemaCheck.h"

#include <unistd.h>

#include <vector>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov::testing {
namespace {

#if defined(TOV_REPORT_VALIDATOR)
constexpr bool kValidatorBuilt = true;
constexpr const char* kPython = TOV_PYTHON;
constexpr const char* kValidator = TOV_REPORT_VALIDATOR;
constexpr const char* kReportSchema = TOV_REPORT_SCHEMA;
constexpr const char* kHeaderSchema = TOV_HEADER_SCHEMA;
#else
constexpr bool kValidatorBuilt = false;
constexpr const char* kPython = "";
constexpr const char* kValidator = "";
constexpr const char* kReportSchema = "";
constexpr const char* kHeaderSchema = "";
#endif

::testing::AssertionResult validated(const std::vector<NamedText>& texts, const std::string& folder,
                                     const std::vector<std::string>& options) {
    if (!kValidatorBuilt) return ::testing::AssertionSuccess() << "not checked: no python3 with jsonschema";
    std::vector<std::string> arguments{kValidator};
    arguments.insert(arguments.end(), options.begin(), options.end());
    for (const NamedText& text : texts) {
        const std::string path = folder + "/" + text.fileName;
        writeFile(path, text.text);
        arguments.push_back(path);
    }
    const ChildResult result = runInChild([&arguments] {
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        return executeProgram(kPython, arguments);
    });
    if (result.exitCode == 0) return ::testing::AssertionSuccess() << result.output;
    return ::testing::AssertionFailure() << "validator exit status " << result.exitCode << ":\n" << result.output;
}

}  // namespace

bool reportSchemaAvailable() { return kValidatorBuilt; }

::testing::AssertionResult matchesReportSchema(const std::string& document, const std::string& folder,
                                               const std::string& fileName) {
    return matchReportSchema({{fileName, document}}, folder);
}

::testing::AssertionResult matchesHeaderSchema(const std::string& headerLine, const std::string& folder,
                                               const std::string& fileName) {
    return matchHeaderSchema({{fileName, headerLine}}, folder);
}

::testing::AssertionResult matchReportSchema(const std::vector<NamedText>& documents, const std::string& folder) {
    return validated(documents, folder, {"--schema", kReportSchema});
}

::testing::AssertionResult matchHeaderSchema(const std::vector<NamedText>& headerLines, const std::string& folder) {
    return validated(headerLines, folder, {"--schema", kHeaderSchema, "--header-line"});
}

}  // namespace tov::testing
