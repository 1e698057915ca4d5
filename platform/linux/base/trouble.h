// Why a source was not read in full, on its way to the source status.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace linux_platform {

struct Trouble {
  Trouble() = default;
  Trouble(std::string failure) : reason(std::move(failure)) {}
  Trouble(const char* failure) : reason(failure) {}
  Trouble(std::string words, std::string wayOut)
      : reason(std::move(words)), unwatched(true), remedy(std::move(wayOut)) {}

  bool IsNone() const { return reason.empty(); }

  std::string reason;      // in words; "": there is no trouble
  bool unwatched = false;  // nobody watches what is there or configured; else it failed
  std::string remedy;      // of the unwatched
};

// Unless it is none.
inline void AddTrouble(Trouble trouble, std::vector<Trouble>& troubles) {
  if (!trouble.IsNone()) troubles.push_back(std::move(trouble));
}

}  // namespace linux_platform
