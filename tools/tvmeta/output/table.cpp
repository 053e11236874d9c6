#include "output/table.h"

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "system/terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace {

constexpr int Gap = 2;
constexpr int MinWidth = 8; // of a shortened column

int naturalWidth(const Column& column) {
    int width = displayWidth(column.heading);
    for (const std::string& cell : column.cells) {
        width = std::max(width, displayWidth(cell));
    }
    return width;
}

int totalWidth(const std::vector<int>& widths) {
    int total = -Gap;
    for (const int width : widths) {
        total += width + Gap;
    }
    return total;
}

// Omits the last columns until the others fit at their minimum width, then shortens the widest ones.
std::vector<int> fittedWidths(const std::vector<Column>& columns, int limit) {
    std::vector<int> widths;
    std::vector<int> least;
    for (const Column& column : columns) {
        widths.push_back(naturalWidth(column));
        least.push_back(column.cut == Column::Cut::Nowhere ? widths.back() : std::min(widths.back(), MinWidth));
    }
    while (least.size() > 1 && totalWidth(least) > limit) {
        least.pop_back();
    }
    widths.resize(least.size());
    while (totalWidth(widths) > std::max(limit, totalWidth(least))) {
        size_t widest = 0;
        for (size_t i = 0; i < widths.size(); ++i) {
            const bool isWider = widths[widest] == least[widest] || widths[i] > widths[widest];
            widest = widths[i] > least[i] && isWider ? i : widest;
        }
        --widths[widest];
    }
    return widths;
}

std::string shortened(const std::string& cell, Column::Cut cut, int width) {
    return cut == Column::Cut::Start ? withoutStart(cell, width) : withoutEnd(cell, width);
}

// The text of each column in one row, without blanks at its end.
template <typename CellOf>
void printRow(const std::vector<Column>& columns, const std::vector<int>& widths, CellOf cellOf) {
    std::string row;
    for (size_t i = 0; i < widths.size(); ++i) {
        const std::string cell = cellOf(columns[i], widths[i]);
        const std::string blanks(static_cast<size_t>(std::max(widths[i] - displayWidth(cell), 0)), ' ');
        row += (columns[i].isNumeric ? blanks + cell : cell + blanks) + std::string(Gap, ' ');
    }
    std::cout << row.substr(0, row.find_last_not_of(' ') + 1) << "\n";
}

} // namespace

void addRow(std::vector<Column>& columns, std::vector<std::string> cells) {
    for (size_t i = 0; i < columns.size(); ++i) {
        columns[i].cells.push_back(std::move(cells[i]));
    }
}

void printTable(const std::vector<Column>& columns, const std::string& alternatives) {
    constexpr int Unlimited = 1 << 28;
    const int width = outputWidth().value_or(Unlimited);
    const std::vector<int> widths = fittedWidths(columns, width);
    printRow(columns, widths, [](const Column& column, int most) { return withoutEnd(column.heading, most); });
    const size_t rows = columns.empty() ? 0 : columns.front().cells.size();
    for (size_t row = 0; row < rows; ++row) {
        printRow(columns, widths,
                 [row](const Column& column, int most) { return shortened(column.cells[row], column.cut, most); });
    }
    if (const size_t left = columns.size() - widths.size(); left > 0) {
        complain(fmt::format("{} of {} fields do not fit in {}; use {}", left, columns.size(),
                             counted(static_cast<size_t>(width), "column"), alternatives));
    }
}
