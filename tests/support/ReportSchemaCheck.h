#pragma once

// Holds report documents and header lines against the JSON Schemas in schema/, through
// tests/tools/validate-reports.py. The build names the validator and the schemas only
// when python3 with its jsonschema module is there; without them nothing is checked.

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tov::testing {

// True when this build can run the validator.
bool reportSchemaAvailable();

// Writes the document to folder/fileName and validates it against the report schema.
// Fails with the validator's output (each error with its JSON path); succeeds without a
// check when the validator is not available.
::testing::AssertionResult matchesReportSchema(const std::string& document, const std::string& folder,
                                               const std::string& fileName);

// The same for the text of a header file, against the header schema.
::testing::AssertionResult matchesHeaderSchema(const std::string& headerLine, const std::string& folder,
                                               const std::string& fileName);

// Several texts at once (one run of the validator), each written to folder/fileName.
struct NamedText {
    std::string fileName;
    std::string text;
};
::testing::AssertionResult matchReportSchema(const std::vector<NamedText>& documents, const std::string& folder);
::testing::AssertionResult matchHeaderSchema(const std::vector<NamedText>& headerLines, const std::string& folder);

}  // namespace tov::testing
