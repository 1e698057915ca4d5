#include "host/cli/check_line.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>
#include <string_view>

#include "host/cli/standard_output.h"
#include "host/text/escape.h"

namespace host {
namespace {

// A row of hundreds of machines shows little more, and old NRPE passes on 1,024 bytes in all.
constexpr std::size_t kMost = 600;

constexpr std::array<std::string_view, 4> kTakeTheNextWord = {"--platform", "--module",
                                                              "--scenario", "--lang"};

// At the end of a character.
std::string Shorten(std::string text) {
  if (text.size() <= kMost) return text;
  std::size_t end = kMost;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "...";
}

}  // namespace

bool AsksForCheck(int count, const char* const* arguments) {
  for (int i = 1; i < count; ++i) {
    const std::string_view word = arguments[i];
    if (std::ranges::find(kTakeTheNextWord, word) != kTakeTheNextWord.end())
      ++i;
    else if (!word.starts_with('-'))
      return word == "check";
  }
  return false;
}

std::string MakeCheckLine(const std::string& text) {
  std::string line = Sanitize(text);
  std::ranges::replace(line, '|', '/');
  return Shorten(std::move(line));
}

ExitStatus TellCheckFailure(const std::string& what) {
  std::string words;
  std::istringstream lines(what);
  for (std::string line; std::getline(lines, line);) words += (words.empty() ? "" : " - ") + line;
  try {
    WriteOutput("UNKNOWN - " + MakeCheckLine(words) + "\n");
  } catch (const Failure& failure) {
    std::cerr << "vela-health: " << failure.what() << '\n';
  }
  return kIncomplete;
}

}  // namespace host
