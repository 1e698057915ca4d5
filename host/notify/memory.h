// What has been told so far, and what follows from the next look.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/notify/look.h"

namespace host {

// What is told once it is there for this many rounds; danger is told at once.
constexpr int kSettledRounds = 2;
// What was told has cleared when it is missing for `hold` rounds. Each time it comes back within
// kMostHold rounds it must stay away twice as long, so that what comes and goes is soon told no
// more.
constexpr int kMostHold = 32;

struct KnownItem {
  Item item;  // its line is as it was told
  bool told = false;
  int seen = 0;    // rounds for which it is there, until it is told
  int missed = 0;  // rounds for which it is missing
  int hold = kSettledRounds;
  std::set<std::string> unseen;  // what its check rests on and was not read, when it was there
};

struct ItemChange {
  bool cleared = false;
  Item item;
};

class Memory {
 public:
  Memory() = default;
  explicit Memory(std::vector<KnownItem> items) : items_(std::move(items)) {}

  const std::vector<KnownItem>& Items() const { return items_; }

  // What there is to tell after this look, the new first, the most urgent before others. `atOnce`:
  // whatever is new need not settle, as nobody would remember that it was there.
  std::vector<ItemChange> Compare(const Look& look, bool atOnce);

 private:
  void See(const Look& look, const Item& item, bool atOnce, std::vector<ItemChange>& changes);

  std::vector<KnownItem> items_;
};

}  // namespace host
