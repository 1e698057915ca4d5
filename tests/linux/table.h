// Cases as data: tests/fixtures/linux/tables/NAME has one a line, its columns between '|', with
// '#' before a remark.
#pragma once

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// Every row without the blanks around its columns; throws where a row has other than `columns`.
inline std::vector<std::vector<std::string>> ReadTable(const std::string& name,
                                                       std::size_t columns) {
  std::ifstream file(FIXTURES "/tables/" + name);
  std::vector<std::vector<std::string>> rows;
  for (std::string line, cell; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream cells(line + "|");
    auto& row = rows.emplace_back();
    while (std::getline(cells, cell, '|')) {
      const std::size_t start = std::min(cell.find_first_not_of(' '), cell.size());
      row.push_back(cell.substr(start, cell.find_last_not_of(' ') + 1 - start));
    }
    if (row.size() != columns) throw std::runtime_error(name + ": " + line);
  }
  if (rows.empty()) throw std::runtime_error("no table is called " + name);
  return rows;
}
