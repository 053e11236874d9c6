// Columns of text, side by side.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

struct Column {
    enum class Cut { Nowhere, Start, End }; // where its cells are shortened when the table is too wide

    std::string heading;
    Cut cut = Cut::Nowhere;
    bool isNumeric = false;
    std::vector<std::string> cells = {};
};

// Writes a table to standard output, in at most `width` columns of the terminal if it is limited. Returns how many of
// the last columns found no room and were left out.
size_t printTable(std::vector<Column> columns, std::optional<int> width);
