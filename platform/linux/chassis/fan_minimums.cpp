#include "platform/linux/chassis/fan_minimums.h"

#include <algorithm>

namespace linux_platform {
namespace {

// The words of a line, without quotes, up to its comment.
std::vector<std::string> SplitLine(std::string_view line) {
  constexpr std::string_view kBetween = " \t\r\"";
  line = line.substr(0, line.find('#'));
  std::vector<std::string> words;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(kBetween), line.size()));
    if (line.empty()) return words;
    words.emplace_back(line.substr(0, line.find_first_of(kBetween)));
    line.remove_prefix(words.back().size());
  }
}

// "fan2" of "fan2_min"; "" of anything else.
std::string FanOf(const std::string& attribute) {
  constexpr std::string_view kEnd = "_min";
  if (!attribute.starts_with("fan") || !attribute.ends_with(kEnd)) return {};
  return attribute.substr(0, attribute.size() - kEnd.size());
}

}  // namespace

std::vector<FanMinimum> ParseFanMinimums(std::string_view text) {
  std::vector<FanMinimum> minimums;
  std::vector<std::string> chips;
  while (!text.empty()) {
    const std::vector<std::string> words = SplitLine(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    if (words.size() < 2) continue;
    if (words[0] == "chip") chips.assign(words.begin() + 1, words.end());
    if (words[0] != "set" || FanOf(words[1]).empty()) continue;
    for (const std::string& chip : chips) minimums.push_back({chip, FanOf(words[1])});
  }
  return minimums;
}

}  // namespace linux_platform
