// Tables of test values: tests/data/NAME.tsv, a row per line, its cells divided by tabs.
//
// Empty lines and lines starting with # are skipped. Cells are taken as they stand, nothing is unescaped.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "platform/utf8.h"

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

/// A table of paths: those of Windows are there on Windows only.
inline std::vector<DataRow> PathTable(const std::string& name) {
    std::vector<DataRow> rows = DataTable(name);
#ifndef _WIN32
    std::erase_if(rows, [](const DataRow& row) {
        return std::any_of(row.cells.begin(), row.cells.end(), [](const std::string& cell) {
            return cell.find_first_of("\\:") != std::string::npos;
        });
    });
#endif
    return rows;
}

/// A cell as a number, a text, or Y or N.
template <typename T>
T ValueOf(const std::string& cell) {
    if constexpr (std::is_same_v<T, bool>) {
        return cell == "Y";
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(std::stod(cell));
    } else if constexpr (std::is_unsigned_v<T>) {
        return static_cast<T>(std::stoull(cell));
    } else if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(std::stoll(cell));
    } else if constexpr (std::is_same_v<T, std::wstring>) {
        return FromUtf8(cell);
    } else {
        return cell;
    }
}

/// The rows of a table whose columns have these types; where the row is comes first.
template <typename... Types>
std::vector<std::tuple<std::string, Types...>> TableOf(const std::string& name) {
    std::vector<std::tuple<std::string, Types...>> rows;
    for (const DataRow& row : DataTable(name)) {
        std::size_t cell = 0;
        const auto fill = [&](std::string& where, Types&... values) {
            where = row.where;
            ((values = ValueOf<Types>(row[cell++])), ...);
        };
        std::apply(fill, rows.emplace_back());
    }
    return rows;
}

}  // namespace skyvault
