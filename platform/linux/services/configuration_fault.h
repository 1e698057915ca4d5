// Why a web server refuses its configuration, in the words of its own test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace linux_platform {

struct ConfigurationFault {
  std::string words;      // "unknown directive \"foo\""; empty: the test printed nothing
  std::string path;       // of the file; empty where the test names none
  std::int64_t line = 0;  // 0: not told
};

// Out of what `nginx -t`, `apache2ctl -t` or `lighttpd -tt` printed: of the first line that names a
// file and a line in it, else of the first that says anything. Printable text only.
ConfigurationFault ParseConfigurationTest(std::string_view output);

}  // namespace linux_platform
