// The folder in which the state lies from one round to the next.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "host/notify/state.h"

namespace host {

class Store {
 public:
  // `spare` takes what `folder` does not, on a full or broken disk, until the next start; may be
  // empty. Makes `folder` where only that is missing. Waits a while for another program that has
  // it, and then throws Failure(kBusy).
  Store(std::filesystem::path folder, std::filesystem::path spare);
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // The newer of both copies. Of a damaged one says `problem`; empty: there was nothing wrong.
  State Load(std::string& problem);
  // Only when it differs from what was saved or loaded last; a power failure leaves the old one or
  // the new one. False when neither folder takes it: `problem` says why.
  bool Save(State& state, std::string& problem);

  // Whether the last round came to no end between these two.
  bool BeginAsking() const;
  void EndAsking() const;

 private:
  std::vector<std::filesystem::path> folders_;
  std::string written_;  // what the newest copy holds
  int lock_ = -1;
};

}  // namespace host
