#include "platform/linux/ups/ups_status.h"

#include <algorithm>
#include <array>
#include <vector>

namespace linux_platform {
namespace {

// What a UPS does only while the mains are there. Some drivers say nothing else.
constexpr auto kMainsWords =
    std::to_array<std::string_view>({"OL", "TRIM", "BOOST", "CHRG", "BYPASS"});

class Words {
 public:
  explicit Words(std::string_view text) {
    for (std::string_view word; !(word = NextNutWord(text)).empty();) words_.push_back(word);
  }
  bool Has(std::string_view word) const { return std::ranges::find(words_, word) != words_.end(); }

 private:
  std::vector<std::string_view> words_;
};

}  // namespace

std::string_view NextNutWord(std::string_view& rest) {
  constexpr std::string_view kBlanks = " \t\r\n";
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  std::string_view word = rest.substr(0, rest.find_first_of(kBlanks));
  rest.remove_prefix(word.size());
  if (word.size() >= 2 && word.front() == '"' && word.back() == '"')
    word = word.substr(1, word.size() - 2);
  return word;
}

// FSD is a forced shutdown, OB on battery, LB low battery; CAL empties the battery on purpose.
UpsState JudgeUpsWords(std::string_view text) {
  const Words words(text);
  if (words.Has("FSD")) return UpsState::BatteryLow;
  const bool mains =
      std::ranges::any_of(kMainsWords, [&words](auto word) { return words.Has(word); });
  // With OL it is a load that outgrows the mains, or a test.
  const bool battery = words.Has("OB") || (words.Has("DISCHRG") && !mains);
  // Drivers flood LB while on mains: it means a worn battery there, not a flat one.
  if (words.Has("LB") && (battery ? !words.Has("CAL") : !mains)) return UpsState::BatteryLow;
  if (battery) return UpsState::OnBattery;
  return mains ? UpsState::OnMains : UpsState::Unknown;
}

bool HasUpsWord(std::string_view text, std::string_view word) { return Words(text).Has(word); }

}  // namespace linux_platform
