// Which supplies and fans were there when they were last asked for: the collector's memory
// "plugged", which outlives restarts. It tells a bay that lost its supply from one that never had
// any.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

// What to do about a part that is gone.
constexpr const char* kForgetPart =
    "put it back; if it is gone for good: rm /var/lib/vela-platform/plugged.json";

struct PluggedParts {
  static constexpr const char* kSource = "plugged";
  static constexpr const char *kController = "controller", *kMains = "mains";

  // By their device, such as an enclosure's identifier: the place and name of each, "2 PS2".
  std::map<std::string, std::set<std::string>> parts;

  bool Has(const std::string& device, const std::string& part) const;

  // Calls those Gone that are Absent and were there. While all are Absent, their device knows
  // nothing yet: a machine that runs has a supply.
  template <typename Part>
  void MarkGone(const std::string& device, std::vector<Part>& list) const {
    const auto isAbsent = [](const Part& part) { return part.state == Part::State::Absent; };
    if (std::ranges::all_of(list, isAbsent)) return;
    for (std::size_t place = 0; place < list.size(); ++place)
      if (isAbsent(list[place]) && Has(device, Name(place, list[place].name)))
        list[place].state = Part::State::Gone;
  }
  // Takes in what is there now, and keeps what was there of the same list before.
  template <typename Part>
  void Remember(const std::string& device, const std::vector<Part>& list,
                const PluggedParts& before) {
    for (std::size_t place = 0; place < list.size(); ++place) {
      using State = typename Part::State;
      const State state = list[place].state;
      const bool isThere =
          state != State::Absent && state != State::Gone && state != State::Unknown;
      const std::string key = Name(place, list[place].name);
      if (isThere || before.Has(device, key)) parts[device].insert(key);
    }
  }

  Json::Value ToJson() const;
  static PluggedParts FromJson(const Json::Value& document);

 private:
  static std::string Name(std::size_t place, const std::string& name) {
    return std::to_string(place + 1) + " " + name;
  }
};

}  // namespace linux_platform
