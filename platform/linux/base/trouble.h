// Why a source was not read in full, on its way to the source status.
#pragma once

#include <string>
#include <utility>

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

}  // namespace linux_platform
