#include "host/loader/module_log.h"

#include <syslog.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string_view>
#include <utility>

#include "common/sanitize.h"

namespace host {
namespace {

using source_status::State;

thread_local std::vector<std::string>* listener = nullptr;

// The first row decides whose a line is: where it comes from, and words in it.
struct Row {
  std::string_view origin, words;
  const char* source;
};
constexpr Row kRows[] = {
    {"SystemInfo/storage_info:", "volume info", "volumes"},
    {"SystemInfo/storage_info:", "", "disks"},
    {"SystemInfo/san_status_info:", "", "SAN"},
    {"SystemInfo/ebox_status_info:", "", "expansion units"},
    {"SystemInfo/ups_status_info:", "", "UPS"},
    {"SystemInfo/system_status_info:", "support key", "configuration"},
    {"SystemInfo/system_status_info:", "", "web server"},
    {"SystemInfo/vela_conf_info:", "", "configuration"},
    {"module/", "network interfaces", "network"},
    {"module/", "get interface", "network"},
    {"module/", "", "operating system"},
};

const char* FindSource(std::string_view line) {
  for (const Row& row : kRows) {
    if (line.starts_with(row.origin) && line.find(row.words) != line.npos) return row.source;
  }
  return nullptr;
}

VELASourceReport& FindReport(const char* name, std::vector<VELASourceReport>& sources) {
  const auto found = std::find_if(sources.begin(), sources.end(), [name](const auto& source) {
    return std::string_view(source.name) == name;
  });
  return found != sources.end() ? *found : sources.emplace_back(VELASourceReport{.name = name});
}

std::string FormatLine(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::string line(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, format, again)), '\0');
  va_end(again);
  std::vsnprintf(line.data(), line.size() + 1, format, arguments);
  return line;
}

// To the C library's own.
void PassToLog(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  vsyslog(priority, format, arguments);
  va_end(arguments);
}

// A terminal shows the log, and its lines quote anybody.
void WriteLine(int priority, const char* format, std::va_list arguments) {
  std::string line = FormatLine(format, arguments);
  PassToLog(priority, "%s", common::Sanitize(line).c_str());
  if (listener != nullptr) listener->push_back(std::move(line));
}

}  // namespace

ModuleLog::ModuleLog() { listener = &lines_; }
ModuleLog::~ModuleLog() { listener = nullptr; }

void AddLoggedFailures(const std::vector<std::string>& lines,
                       std::vector<VELASourceReport>& sources) {
  for (const std::string& line : lines) {
    const char* name = FindSource(line);
    if (name == nullptr) continue;
    VELASourceReport& source = FindReport(name, sources);
    if (source.state == State::Failed) continue;  // the first words, and the platform's, stay
    source.state = State::Failed;
    source.reasonCount = 1;
    source.moreReasons = 0;
    source.reasons[0] = {};
    std::snprintf(source.reasons[0].text, sizeof source.reasons[0].text, "%s",
                  line.c_str() + std::min(line.size(), line.find(' ') + 1));
  }
}

}  // namespace host

// A symbol of the executable is found before libc's: the module's lines pass here.
#pragma GCC visibility push(default)
extern "C" void syslog(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  host::WriteLine(priority, format, arguments);
  va_end(arguments);
}
#pragma GCC visibility pop
