// Tables of test values: tests/data/NAME.tsv, a row per line, its cells divided by tabs.
//
// Empty lines and lines starting with # are skipped. Cells are taken as they stand, nothing is unescaped.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace skyvault {

struct DataRow {
    std::vector<std::string> cells;
    std::string where;  ///< the file and the line, for SCOPED_TRACE(row.where)

    /// A row with too few cells fails the test.
    const std::string& operator[](std::size_t cell) const { return cells.at(cell); }
    /// A cell in which | is a tab, ^ a line feed and ~ a carriage return.
    std::string Text(std::size_t cell) const {
        std::string text = cells.at(cell);
        for (char& c : text) c = c == '|' ? '\t' : c == '^' ? '\n' : c == '~' ? '\r' : c;
        return text;
    }
};

/// A table that is missing or empty fails the test.
inline std::vector<DataRow> DataTable(const std::string& name) {
    std::vector<DataRow> rows;
    std::ifstream file(SKYVAULT_SOURCE_DIR "/tests/data/" + name + ".tsv", std::ios::binary);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.ends_with('\r')) line.pop_back();
        if (line.empty() || line.starts_with('#')) continue;
        DataRow& row = rows.emplace_back();
        row.where = name + ".tsv, line " + std::to_string(number);
        std::istringstream cells(line);
        for (std::string cell; std::getline(cells, cell, '\t');) row.cells.push_back(cell);
        if (line.ends_with('\t')) row.cells.emplace_back();
    }
    EXPECT_FALSE(rows.empty()) << name << ".tsv";
    return rows;
}

}  // namespace skyvault
