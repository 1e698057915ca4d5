// What one round leaves for the next: what was told, and what each hook has not taken yet.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/notify/memory.h"
#include "host/notify/message.h"

namespace host {

// So many messages wait for a hook; of more the oldest are left out, and counted.
constexpr std::size_t kMostWaiting = 16;

struct Waiting {
  std::deque<std::int64_t> messages;  // by number, the oldest first
  int leftOut = 0;                    // since the last one that was taken
};

struct State {
  std::int64_t saved = 0;  // how often; of two copies the newer counts
  std::int64_t next = 1;   // the number of the next message
  std::int64_t began = 0;  // when there was none before, in seconds since 1970
  Memory memory;
  std::map<std::int64_t, Message> messages;
  std::map<std::string, Waiting> hooks;
};

// For all these hooks, and for no others: nothing waits for a hook that is gone.
void AddMessage(State& state, Message message, const std::vector<std::string>& hooks);
// Of all that wait for this hook the oldest was taken.
void TakeMessage(State& state, const std::string& hook);

std::string WriteState(const State& state);
// False when it is not what WriteState wrote.
bool ReadState(std::string_view text, State& state);

}  // namespace host
