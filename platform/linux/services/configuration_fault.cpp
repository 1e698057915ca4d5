#include "platform/linux/services/configuration_fault.h"

#include <algorithm>
#include <regex>

namespace linux_platform {
namespace {

constexpr std::size_t kLongest = 1024;  // of a line; what lies behind says nothing more
constexpr int kMostLines = 64;

std::string TakeLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  std::string line(rest.substr(0, std::min(end, kLongest)));
  rest.remove_prefix(std::min(end + 1, rest.size()));
  std::ranges::replace_if(
      line, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
  return line;
}

std::int64_t ToLine(const std::string& digits) { return std::stoll(digits); }

// nginx: [emerg] unknown directive "foo" in /etc/nginx/sites-enabled/a:12
bool IsOfNginx(const std::string& line, ConfigurationFault& fault) {
  static const std::regex kFault(R"((?:.*?\[\w+\] )?(?:\d+#\d+: )?(.+) in (/\S+):(\d{1,9})\s*)");
  std::smatch found;
  if (!std::regex_match(line, found, kFault)) return false;
  fault = {found[1], found[2], ToLine(found[3])};
  return true;
}

// AH00526: Syntax error on line 12 of /etc/apache2/sites-enabled/a.conf:
// Invalid command 'Foo', perhaps misspelled ...
bool IsOfApache(const std::string& line, std::string_view rest, ConfigurationFault& fault) {
  static const std::regex kFault(R"(.*[Ee]rror on line (\d{1,9}) of (/.+?):\s*(.*))");
  std::smatch found;
  if (!std::regex_match(line, found, kFault)) return false;
  fault = {found[3], found[2], ToLine(found[1])};
  if (fault.words.empty()) fault.words = TakeLine(rest);
  return true;
}

// (configfile.c.1967) source: /etc/lighttpd/lighttpd.conf line: 12 pos: 1 unexpected end of line
bool IsOfLighttpd(const std::string& line, ConfigurationFault& fault) {
  static const std::regex kFault(R"(.*source: (/\S+) line: (\d{1,9}) pos: \d+:?\s*(.+))");
  std::smatch found;
  if (!std::regex_match(line, found, kFault)) return false;
  fault = {found[3], found[1], ToLine(found[2])};
  return true;
}

}  // namespace

ConfigurationFault ParseConfigurationTest(std::string_view output) {
  ConfigurationFault fault;
  std::string first;
  for (int lines = 0; !output.empty() && lines < kMostLines; ++lines) {
    const std::string line = TakeLine(output);
    if (IsOfNginx(line, fault) || IsOfApache(line, output, fault) || IsOfLighttpd(line, fault))
      return fault;
    if (first.empty()) first = line;
  }
  fault.words = first;
  return fault;
}

}  // namespace linux_platform
