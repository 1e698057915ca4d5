// Ownership of what the platform hands out with a release call.
#pragma once

#include <cstddef>

namespace VELA::SystemHealth {

// Calls `Free` exactly once on every way out, for null too: the release is owed for
// the enumeration, not for its records. std::unique_ptr would skip null.
template <typename Record, auto Free>
class PlatformList {
 public:
  explicit PlatformList(Record* head = nullptr) : head_(head) {}
  ~PlatformList() { Free(head_); }
  PlatformList(const PlatformList&) = delete;
  PlatformList& operator=(const PlatformList&) = delete;

  Record*& Out() { return head_; }
  Record* Head() const { return head_; }

 private:
  Record* head_;
};

// How many records a linked list holds.
template <typename Record>
std::size_t LengthOf(const Record* head) {
  std::size_t length = 0;
  for (; head != nullptr; head = head->next) ++length;
  return length;
}

}  // namespace VELA::SystemHealth
