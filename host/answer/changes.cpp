#include "host/answer/changes.h"

#include <algorithm>
#include <map>

#include "host/answer/finding_text.h"
#include "host/answer/things.h"

namespace host {
namespace {

std::string FormatCheck(const CheckerResult& result, const SourceReports& sources,
                        const Texts& texts) {
  return result.finding ? RenderSentence(*result.finding, texts)
                        : FormatOutcome(result, sources, texts);
}

// What of A a thing of B is: the same serial number, else the same name unless both have one.
class Matches {
 public:
  explicit Matches(const std::vector<Thing>& things) : things_(things) {
    for (std::size_t i = 0; i < things.size(); ++i) {
      byKey_.try_emplace(things[i].key, i);
      if (!things[i].serial.empty()) bySerial_.try_emplace(things[i].serial, i);
    }
  }

  const Thing* Find(const Thing& other) const {
    const auto serial = bySerial_.find(other.serial);
    if (serial != bySerial_.end()) return &things_[serial->second];
    const auto key = byKey_.find(other.key);
    if (key == byKey_.end()) return nullptr;
    const Thing& same = things_[key->second];
    return same.serial.empty() || other.serial.empty() ? &same : nullptr;
  }

 private:
  const std::vector<Thing>& things_;
  std::map<std::string, std::size_t> byKey_, bySerial_;
};

// Whether this side would have seen the thing of the other one, were it there.
bool WouldSee(const SavedAnswer& side, const Thing& thing) {
  if (thing.seenIn.empty()) return false;
  const auto check = std::ranges::find(side.checkers, thing.check, &CheckerResult::name);
  return check != side.checkers.end() && !check->saw[thing.seenIn].isNull();
}

void Append(std::string& line, const std::string& value) {
  if (!line.empty() && !value.empty()) line += " · ";
  line += value;
}

std::string JoinValues(const Thing& thing) {
  std::string line;
  for (const auto& [name, value] : thing.values) Append(line, value);
  for (const auto& [unit, compared] : thing.compared) Append(line, compared.words);
  return line;
}

// Of a thing that both sides know: the values that differ, and comparisons that fell out otherwise.
Change CompareThing(const Thing& before, const Thing& after) {
  Change change{after.title, "", ""};
  const auto add = [&change](const std::string& old, const std::string& now) {
    Append(change.before, old);
    Append(change.after, now);
  };
  if (before.place != after.place && !before.place.empty() && !after.place.empty())
    add(before.place, after.place);
  for (const auto& [name, now] : after.values) {
    const auto old = before.values.find(name);
    if (old != before.values.end() && old->second != now) add(old->second, now);
  }
  for (const auto& [unit, now] : after.compared) {
    const auto old = before.compared.find(unit);
    if (old != before.compared.end() && old->second.low != now.low)
      add(old->second.words, now.words);
  }
  return change;
}

}  // namespace

std::vector<Change> CompareChecks(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts) {
  std::vector<Change> changes;
  for (const CheckerResult& after : b.checkers) {
    const auto before = std::ranges::find(a.checkers, after.name, &CheckerResult::name);
    if (before == a.checkers.end()) continue;
    const std::string old = FormatCheck(*before, a.sources, texts);
    const std::string now = FormatCheck(after, b.sources, texts);
    if (old != now) changes.push_back({texts.GetText("checker", after.name), old, now});
  }
  return changes;
}

std::vector<Change> CompareSources(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts) {
  std::vector<Change> changes;
  for (const VELASourceReport& after : b.sources) {
    const auto same = [&after](const VELASourceReport& other) {
      return std::string_view(other.name) == after.name;
    };
    const auto before = std::ranges::find_if(a.sources, same);
    if (before == a.sources.end() || before->state == after.state) continue;
    changes.push_back({NameSource(after, texts),
                       texts.FormatUi(source_status::NameState(before->state)),
                       texts.FormatUi(source_status::NameState(after.state))});
  }
  return changes;
}

std::vector<Change> CompareThings(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts) {
  std::vector<Change> changes;
  if (a.checkers.empty() || b.checkers.empty()) return changes;
  const bool told = a.parts.begin() != a.parts.end() && b.parts.begin() != b.parts.end();
  const std::vector<Thing> before = ListThings(a, told, texts), after = ListThings(b, told, texts);
  const Matches old(before), now(after);
  for (const Thing& thing : before)
    if (now.Find(thing) == nullptr && WouldSee(b, thing))
      changes.push_back({thing.title, JoinValues(thing), ""});
  for (const Thing& thing : after) {
    const Thing* same = old.Find(thing);
    if (same == nullptr && WouldSee(a, thing))
      changes.push_back({thing.title, "", JoinValues(thing)});
    if (same == nullptr) continue;
    if (Change change = CompareThing(*same, thing); change.before != change.after)
      changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace host
