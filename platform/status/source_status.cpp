#include "platform/status/source_status.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace source_status {
namespace {

enum : std::int32_t { kAbsent = 0, kRead = 1, kFailed = 2 };

struct Statement {
  bool asked;
  std::int32_t state;
  std::chrono::steady_clock::duration time;
  char reason[sizeof(VELASourceReport::reason)];
};

thread_local std::array<Statement, kSourceCount> statements;

Statement& GetStatement(Source source) { return statements[static_cast<std::size_t>(source)]; }

// The words of the first failure stay: later ones usually follow from it.
void Say(Source source, std::int32_t state, const char* format, std::va_list arguments) {
  Statement& statement = GetStatement(source);
  const bool adds = state == kRead && statement.state == kRead && statement.reason[0] == '\0';
  if (statement.asked && statement.state >= state && !adds) return;
  statement.asked = true;
  statement.state = state;
  std::vsnprintf(statement.reason, sizeof statement.reason, format, arguments);
}

}  // namespace

void SayRead(Source source) {
  Statement& statement = GetStatement(source);
  if (statement.asked && statement.state >= kRead) return;
  statement.asked = true;
  statement.state = kRead;
  statement.reason[0] = '\0';
}

void SayAbsent(Source source, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Say(source, kAbsent, format, arguments);
  va_end(arguments);
}

void SayFailed(Source source, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Say(source, kFailed, format, arguments);
  va_end(arguments);
}

SourceScope::SourceScope(Source source)
    : source_(source), start_(std::chrono::steady_clock::now()) {}

SourceScope::~SourceScope() {
  GetStatement(source_).time += std::chrono::steady_clock::now() - start_;
  if (!said_) SayRead(source_);
}

void SourceScope::Read(const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  Say(source_, kRead, format, arguments);
  va_end(arguments);
}

void SourceScope::Absent(const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  Say(source_, kAbsent, format, arguments);
  va_end(arguments);
}

void SourceScope::Failed(const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  Say(source_, kFailed, format, arguments);
  va_end(arguments);
}

}  // namespace source_status

void VELAPlatformSourcesReset(void) { source_status::statements = {}; }

int VELAPlatformSources(VELASourceReport* reports, int capacity) {
  using namespace source_status;
  using std::chrono::duration_cast, std::chrono::microseconds;
  for (int i = 0; i < std::min(capacity, kSourceCount); ++i) {
    const auto index = static_cast<std::size_t>(i);
    const Statement& statement = statements[index];
    VELASourceReport& report = reports[i];
    report.name = common::kSourceNames[index];
    report.state = statement.state;
    report.microseconds =
        static_cast<std::uint32_t>(duration_cast<microseconds>(statement.time).count());
    std::memcpy(report.reason, statement.asked ? statement.reason : "not asked",
                statement.asked ? sizeof report.reason : sizeof "not asked");
  }
  return kSourceCount;
}
