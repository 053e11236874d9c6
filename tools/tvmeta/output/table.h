// Columns of text, side by side.
#pragma once

#include <string>
#include <vector>

struct Column {
    enum class Cut { Nowhere, Start, End }; // where cells are shortened if the table is too wide

    std::string heading;
    Cut cut = Cut::Nowhere;
    bool isNumeric = false;
    std::vector<std::string> cells = {};
};

// Adds a row: a cell for each column.
void addRow(std::vector<Column>& columns, std::vector<std::string> cells);

// Writes a table to standard output, in a terminal at most as wide as that. A message names the number of columns that
// did not fit and were omitted, and the options that show them.
void printTable(const std::vector<Column>& columns, const std::string& alternatives);
