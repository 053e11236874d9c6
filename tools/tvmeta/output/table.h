// Columns of text, side by side.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

struct Column {
    enum class Cut { Nowhere, Start, End }; // where cells are shortened if the table is too wide

    std::string heading;
    Cut cut = Cut::Nowhere;
    bool isNumeric = false;
    std::vector<std::string> cells = {};
};

// Writes a table to standard output, in at most `width` terminal columns if limited. Returns the number of table
// columns that did not fit and were omitted.
size_t printTable(std::vector<Column> columns, std::optional<int> width);
