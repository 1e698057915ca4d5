#include "host/cli/scenario_names.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>

namespace host {
namespace {

using Words = std::vector<std::string>;

constexpr std::size_t kMostNames = 3;

Words WordsOf(std::string_view name) {
  Words words;
  boost::algorithm::split(words, name, boost::algorithm::is_any_of("-_ "),
                          boost::algorithm::token_compress_on);
  return words;
}

}  // namespace

std::string SuggestScenarios(const std::filesystem::path& folder, std::string_view wanted) {
  const Words words = WordsOf(wanted);
  // Ordered by words that are not shared: few foreign words come first.
  std::vector<std::pair<int, std::string>> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (!entry.is_directory(error)) continue;
    const std::string name = entry.path().filename();
    const Words own = WordsOf(name);
    const auto shared = std::count_if(words.begin(), words.end(), [&own](const std::string& word) {
      return std::find(own.begin(), own.end(), word) != own.end();
    });
    if (shared > 0) names.emplace_back(static_cast<int>(own.size()) - 3 * shared, name);
  }
  if (names.empty()) return "All names: ls " + folder.string();
  std::sort(names.begin(), names.end());
  names.resize(std::min(names.size(), kMostNames));
  Words best;
  for (auto& [foreign, name] : names) best.push_back(std::move(name));
  return "There is: " + boost::algorithm::join(best, ", ") + ". All names: ls " + folder.string();
}

}  // namespace host
