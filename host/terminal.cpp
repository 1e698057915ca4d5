#include "host/terminal.h"

#include <unistd.h>

#include <cstdlib>

namespace vela::host {
namespace {

struct Look {
  const char* symbol;
  const char* code;
};

Look LookOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Danger:
      return {"✖ ", "1;31"};
    case Verdict::Warning:
      return {"▲ ", "1;33"};
    case Verdict::Notice:
      return {"◆ ", "1;36"};
    case Verdict::Well:
      break;
  }
  return {"● ", "1;32"};
}

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

Style Style::ForStandardOutput() {
  const char* terminal = std::getenv("TERM");
  const bool dumb = terminal == nullptr || std::string_view(terminal) == "dumb";
  return Style(isatty(STDOUT_FILENO) != 0 && !dumb && !IsSet("NO_COLOR"));
}

std::string Style::Severity(Verdict verdict, std::string_view word) const {
  if (!decorated_) return std::string(word);
  const Look look = LookOf(verdict);
  return Wrap(look.code, std::string(look.symbol).append(word));
}

std::string Style::Wrap(std::string_view code, std::string_view text) const {
  if (!decorated_) return std::string(text);
  return std::string("\033[").append(code).append("m").append(text).append("\033[0m");
}

}  // namespace vela::host
