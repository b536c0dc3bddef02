#pragma once

// A plain-text table for people, in the manner of "lshw -short": a heading line, a rule
// of "=", then one line per row, each column as wide as its widest cell. Cells are made
// printable single-line text and cut with "…" at their column's maximum width, so no
// value can break the layout; the last column is not padded.

#include <cstddef>
#include <string>
#include <vector>

namespace tov {

class SummaryTable {
public:
    static constexpr const char* kColumnGap = "  ";

    struct Column {
        std::string heading;
        std::size_t maximumWidth;
    };

    explicit SummaryTable(std::vector<Column> columns);

    // Missing cells are empty, cells beyond the columns are dropped.
    void addRow(const std::vector<std::string>& cells);
    // Every line ends with a line break; trailing blanks are removed.
    std::string text() const;

private:
    std::vector<std::size_t> columnWidths() const;
    std::string line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const;

    std::vector<Column> columns_;
    // The heading line first, then the rows added.
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace tov
