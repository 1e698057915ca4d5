// The executables of the hooks' folder, and how one of them is run.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "host/notify/message.h"

namespace host {

// The names of the executables in the folder, in their order. As with run-parts(8), a name that
// holds anything but letters, digits, "_" and "-" does not count: "mail~", "mail.dpkg-old".
// Throws Failure(kNoInput) when the folder cannot be read: what waits for its hooks must not be
// forgotten.
std::vector<std::string> ListHooks(const std::filesystem::path& folder);

// A hook ends with this status to say that it is switched off: it has nobody to tell.
constexpr int kHookIsOff = 77;

struct HookResult {
  enum class Kind { Told, Off, Failed, Hung } kind = Kind::Failed;
  std::string reason;  // of Failed: "it ended with status 1"
};

// Runs it without a shell, with the message's words in its environment and its JSON on standard
// input; what it prints goes to standard error. After `timeout` it is killed with all that it has
// started.
HookResult RunHook(const std::filesystem::path& hook, const Message& message,
                   std::chrono::seconds timeout);

}  // namespace host
