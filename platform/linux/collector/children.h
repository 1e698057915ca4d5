// Several processes at once, each read to its end within its own bounds.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/process.h"

namespace linux_platform {

struct Order {
  std::vector<std::string> arguments;  // the program's path first
  Bounds bounds;
};

struct Outcome {
  std::string reason;  // why it was not started; "" when it was
  std::string output;
  int status = -1;  // as waitpid(2) gives it; -1 when it is not known
  Child::Cut cut = Child::Cut::None;
};

// In the order of `orders`. Takes as long as the slowest.
std::vector<Outcome> RunTogether(const std::vector<Order>& orders);

// The arguments that start this very program again, with the same root.
std::vector<std::string> ThisProgram(std::vector<std::string> arguments);

}  // namespace linux_platform
