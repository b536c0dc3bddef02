#include "report/SummaryTable.h"

#include <algorithm>

#include "common/DisplayWidth.h"
#include "common/PrintableText.h"

namespace tov {
namespace {

std::string withoutTrailingBlanks(std::string text) {
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

}  // namespace

// The heading line is laid out as the first row.
SummaryTable::SummaryTable(std::vector<Column> columns) : columns_(std::move(columns)) {
    std::vector<std::string> headings;
    for (const Column& column : columns_) headings.push_back(column.heading);
    addRow(headings);
}

void SummaryTable::addRow(const std::vector<std::string>& cells) {
    std::vector<std::string> row;
    for (std::size_t index = 0; index < columns_.size(); ++index) {
        const std::string cell = index < cells.size() ? printableText(cells[index]) : std::string();
        row.push_back(cutToDisplayWidth(cell, columns_[index].maximumWidth));
    }
    rows_.push_back(std::move(row));
}

std::string SummaryTable::text() const {
    const std::vector<std::size_t> widths = columnWidths();
    std::vector<std::string> lines;
    for (const auto& row : rows_) lines.push_back(line(row, widths));

    std::size_t ruleWidth = 0;
    for (const std::string& text : lines) ruleWidth = std::max(ruleWidth, displayWidth(text));
    std::string text = lines.front() + "\n" + std::string(ruleWidth, '=') + "\n";
    for (std::size_t index = 1; index < lines.size(); ++index) text += lines[index] + "\n";
    return text;
}

std::vector<std::size_t> SummaryTable::columnWidths() const {
    std::vector<std::size_t> widths(columns_.size(), 0);
    for (const auto& row : rows_) {
        for (std::size_t index = 0; index < row.size(); ++index) {
            widths[index] = std::max(widths[index], displayWidth(row[index]));
        }
    }
    return widths;
}

std::string SummaryTable::line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const {
    std::string text;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        if (index > 0) text += kColumnGap;
        text += cells[index];
        if (index + 1 < cells.size()) text += std::string(widths[index] - displayWidth(cells[index]), ' ');
    }
    return withoutTrailingBlanks(std::move(text));
}

}  // namespace tov
