// The options that several commands share, and what is said to whoever used one wrongly.
#pragma once

#include <string>
#include <vector>

#include "host/cli/session.h"

namespace CLI {
class App;
}

namespace host {

using Names = std::vector<std::string>;

// As they are written, "--json".
extern const Names kCommonOptions;

// Their values, or what the environment says, go to `options`.
void AddCommonOptions(CLI::App& app, CommonOptions& options);

// What is wrong, and what would be right for the command that was meant. `used` are the common
// options that it has a use for.
std::string FormatUsageError(const CLI::App& app, const Names& used, const std::string& what);

// A blank before each.
// One line each: what the option takes and means.
std::string DescribeOptions(const CLI::App& app, const Names& names);
std::string JoinNames(const Names& names);

}  // namespace host
