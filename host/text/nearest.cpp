#include "host/text/nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kMostSlips = 2;

// Letters that were left out, added or replaced; two that were swapped count as two.
std::size_t CountSlips(std::string_view a, std::string_view b) {
  std::vector<std::size_t> last(b.size() + 1);  // by the letters of `b` that are taken
  std::iota(last.begin(), last.end(), 0);
  for (const char letter : a) {
    std::vector<std::size_t> row{last[0] + 1};
    for (std::size_t j = 0; j < b.size(); ++j)
      row.push_back(std::min({last[j + 1] + 1, row[j] + 1, last[j] + (letter == b[j] ? 0 : 1)}));
    last = std::move(row);
  }
  return last.back();
}

}  // namespace

std::string FindNearest(const std::vector<std::string>& names, std::string_view wanted) {
  std::string nearest;
  std::size_t fewest = kMostSlips + 1;
  for (const std::string& name : names) {
    const bool tooLong = wanted.size() > name.size() + kMostSlips;
    const std::size_t slips = tooLong ? fewest : CountSlips(name, wanted);
    if (slips >= fewest) continue;
    fewest = slips;
    nearest = name;
  }
  return nearest;
}

}  // namespace host
