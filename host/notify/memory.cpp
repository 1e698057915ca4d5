#include "host/notify/memory.h"

#include <algorithm>

namespace host {
namespace {

bool IsThere(const Look& look, const Item& item) {
  return std::ranges::any_of(look.items,
                             [&item](const Item& each) { return each.Key() == item.Key(); });
}

std::set<std::string> FindUnseen(const Look& look, const std::string& check) {
  const auto found = look.unseen.find(check);
  return found != look.unseen.end() ? found->second : std::set<std::string>();
}

// Whether it may still be there, and only could not be seen: the machine did not answer, a source
// of its check is not read any more, or its finding is there without a cause.
bool MayBeThere(const KnownItem& known, const Look& look) {
  if (!look.answered) return known.item.kind != ItemKind::Unknown;
  const std::set<std::string> unseen = FindUnseen(look, known.item.check);
  if (!std::ranges::includes(known.unseen, unseen)) return true;
  return std::ranges::any_of(look.items, [&known](const Item& each) {
    return each.group == known.item.group && each.cause.empty() && !known.item.cause.empty();
  });
}

// Of the same finding and part another cause is there, which is told instead: nothing has cleared.
// A finding without a cause gives way to any.
bool IsSuperseded(const Item& item, const Look& look) {
  return std::ranges::any_of(look.items, [&item](const Item& each) {
    return each.group == item.group && (item.part.empty() || each.part == item.part) &&
           !each.cause.empty();
  });
}

// False: it has been away for long enough to be forgotten.
bool Miss(KnownItem& known, const Look& look, std::vector<ItemChange>& cleared) {
  known.seen = 0;
  ++known.missed;
  if (known.told && known.missed >= known.hold) {
    known.told = false;
    known.hold = std::min(2 * known.hold, kMostHold);
    if (!IsSuperseded(known.item, look)) cleared.push_back({true, known.item});
  }
  const bool cameBack = known.hold > kSettledRounds;
  return known.told || (cameBack && known.missed < kMostHold);
}

}  // namespace

void Memory::See(const Look& look, const Item& item, bool atOnce,
                 std::vector<ItemChange>& changes) {
  const auto isSame = [&item](const KnownItem& each) { return each.item.Key() == item.Key(); };
  // Of a finding whose causes nobody knows now, those that were told stand.
  const auto standsFor = [&item](const KnownItem& each) {
    return each.told && !each.item.cause.empty() && each.item.group == item.group;
  };
  auto known = std::ranges::find_if(items_, isSame);
  const bool isTold = known != items_.end() && known->told;
  if (!isTold && item.cause.empty() && std::ranges::any_of(items_, standsFor)) return;
  if (known == items_.end())
    known = items_.insert(items_.end(), {item, false, 0, 0, kSettledRounds, {}});
  known->missed = 0;
  known->unseen = FindUnseen(look, item.check);
  if (known->told) return;
  ++known->seen;
  if (!atOnce && item.kind != ItemKind::Danger && known->seen < kSettledRounds) return;
  known->told = true;
  known->seen = 0;
  known->item = item;
  changes.push_back({false, item});
}

std::vector<ItemChange> Memory::Compare(const Look& look, bool atOnce) {
  std::vector<ItemChange> changes, cleared;
  for (const Item& item : look.items) See(look, item, atOnce, changes);
  std::erase_if(items_, [&](KnownItem& known) {
    const bool isThere = IsThere(look, known.item) || MayBeThere(known, look);
    return !isThere && !Miss(known, look, cleared);
  });
  changes.insert(changes.end(), cleared.begin(), cleared.end());
  return changes;
}

}  // namespace host
