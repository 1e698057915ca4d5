// A request that runs out of memory fails as a whole: std::bad_alloc leaves the handler, no
// response is set, everything is given back. Tried at every single allocation.
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <string_view>

#include <gtest/gtest.h>
#include <vela_api.h>

#include "module/base/log.h"
#include "platform/simulator/scenario.h"
#include "tests/support/ask.h"

// --- The heap of this executable and of every library in it, which can be told to refuse.

#ifdef VELA_ASAN
#define REAL(function) __interceptor_##function
#else
#define REAL(function) __libc_##function
#endif

// The loader asks for memory before the sanitizer has any of its own.
#define UNCHECKED __attribute__((no_sanitize("address", "undefined")))

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

struct Heap {
  bool counting = false;
  bool sending = false;
  long refuseFrom = kNever, refuseTo = kNever;  // the first allocation is 1
  long asked = 0;
  long live = 0;

  UNCHECKED bool Refuses() {
    if (!counting || sending || ++asked < refuseFrom || asked > refuseTo) return false;
    errno = ENOMEM;
    return true;
  }

  UNCHECKED void* Made(void* memory) {
    if (counting && !sending && memory != nullptr) ++live;
    return memory;
  }
};

thread_local Heap heap;

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

void* REAL(malloc)(std::size_t);
void* REAL(calloc)(std::size_t, std::size_t);
void* REAL(realloc)(void*, std::size_t);
void REAL(free)(void*);

UNCHECKED void* malloc(std::size_t size) noexcept {
  return heap.Refuses() ? nullptr : heap.Made(REAL(malloc)(size));
}

UNCHECKED void* calloc(std::size_t count, std::size_t size) noexcept {
  return heap.Refuses() ? nullptr : heap.Made(REAL(calloc)(count, size));
}

UNCHECKED void* realloc(void* memory, std::size_t size) noexcept {
  if (heap.Refuses()) return nullptr;
  void* moved = REAL(realloc)(memory, size);
  return memory == nullptr ? heap.Made(moved) : moved;
}

UNCHECKED void free(void* memory) noexcept {
  if (heap.counting && memory != nullptr) --heap.live;
  REAL(free)(memory);
}
}

// AddressSanitizer's own operators do not pass through malloc.
void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

#pragma GCC visibility pop

namespace VELA::SystemHealth {

thread_local std::size_t logged = 0;

// Keeps what was written, and allocates nothing.
void WriteSystemLog(int, const char* line) {
  logged = logged * 31 + std::hash<std::string_view>()(line);
}

namespace {

struct Result {
  bool exhausted = false;
  bool leaves = false;  // memory, or a platform's resource
  RecordedResponse response = {};
  std::size_t log = 0;
};

// One request in which the allocations from the n-th to the last given one are refused.
Result Request(const simulator::Machine& machine, long from, long to) {
  Result result;
  logged = 0;
  // The request's memory, not the server's: what it keeps of the answer is its own affair.
  result.response.whileSending = [] { heap.sending = true; };
  heap = {.counting = true, .refuseFrom = from, .refuseTo = to};
  try {
    GetAPITable()[0].handler(nullptr, result.response.AsResponse());
  } catch (const std::bad_alloc&) {
    result.exhausted = true;
  }
  heap.counting = false;
  result.leaves = heap.live != 0 || !OwesNothing(machine);
  result.log = logged;
  return result;
}

class MemoryExhaustion : public testing::TestWithParam<const char*> {};

TEST_P(MemoryExhaustion, FailsTheRequestAsAWhole) {
  simulator::Machine machine =
      simulator::LoadScenario(std::string(VELA_SCENARIOS "/") + GetParam());
  simulator::Enter(&machine);
  Request(machine, kNever, kNever);  // what the libraries keep for good
  const Result calm = Request(machine, kNever, kNever);
  const long allocations = heap.asked;
  RecordProperty("allocations", std::to_string(allocations));
  EXPECT_FALSE(calm.leaves || calm.exhausted);

  long absorbed = 0;
  for (long n = 1; n <= allocations && !HasFailure(); ++n) {
    SCOPED_TRACE(n);
    const Result onwards = Request(machine, n, kNever);
    EXPECT_TRUE(onwards.exhausted && onwards.response.answers == 0);
    // A single refusal may be absorbed: a thrown object has spare room elsewhere. What must
    // never come of it is an answer, or a log, that is not the whole truth.
    const Result once = Request(machine, n, n);
    const bool whole = once.response.document == calm.response.document && once.log == calm.log;
    EXPECT_TRUE(once.exhausted ? once.response.answers == 0 : whole);
    EXPECT_FALSE(onwards.leaves || once.leaves);
    if (!once.exhausted) ++absorbed;
  }
  EXPECT_LE(absorbed, std::ssize(machine.volumes)) << "one thrown object for each volume left out";
  simulator::Enter(nullptr);
}

// Machines whose findings between them take every branch that allocates.
INSTANTIATE_TEST_SUITE_P(Machines, MemoryExhaustion,
                         testing::Values("everything-at-once", "failing-everything",
                                         "failing-volume-identifiers", "san-lun-soft-limit",
                                         "usb-volumes-low-mixed-names",
                                         "esata-volumes-low-mixed-names"));

}  // namespace
}  // namespace VELA::SystemHealth
