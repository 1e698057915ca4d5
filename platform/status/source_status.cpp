#include "platform/status/source_status.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/status/notes.h"

namespace source_status {
namespace {

struct Statement {
  VELASourceReport report;
  std::chrono::steady_clock::duration time{};
};

thread_local constinit std::array<Statement, kSourceCount> statements;
thread_local constinit common::SourceSet accepted;

Statement& GetStatement(Source source) { return statements[static_cast<std::size_t>(source)]; }

// The larger, the worse.
constexpr int Rank(State state) {
  switch (state) {
    case State::NotAsked:
      return 0;
    case State::Absent:
      return 1;
    case State::Read:
      return 2;
    case State::Accepted:
      return 3;
    case State::Unwatched:
      return 4;
    case State::Failed:
      break;
  }
  return 5;
}

// Whether the report is in that state now; a worse state drops the reasons of a better one.
bool Reach(VELASourceReport& report, State state) {
  if (Rank(state) <= Rank(report.state)) return state == report.state;
  report.state = state;
  report.reasonCount = report.moreReasons = 0;
  return true;
}

bool IsTold(const VELASourceReport& report, const VELASourceReason& reason) {
  return std::any_of(
      report.reasons, report.reasons + report.reasonCount,
      [&reason](const auto& told) { return std::strcmp(told.text, reason.text) == 0; });
}

void AddReason(VELASourceReport& report, const VELASourceReason& reason) {
  if (IsTold(report, reason)) return;
  if (report.reasonCount < kVELASourceReasons)
    report.reasons[report.reasonCount++] = reason;
  else
    report.moreReasons = 1;
}

void SayAll(Source source, State state, const char* remedy, const char* format,
            std::va_list arguments) {
  VELASourceReport& report = GetStatement(source).report;
  if (!Reach(report, state)) return;
  const bool isRemark = state == State::Read && remedy[0] != '\0';
  const bool addsUp = isRemark || state == State::Unwatched || state == State::Accepted;
  if (report.reasonCount > 0 && !addsUp) return;
  VELASourceReason reason;
  std::vsnprintf(reason.text, sizeof reason.text, format, arguments);
  std::snprintf(reason.remedy, sizeof reason.remedy, "%s", remedy);
  AddReason(report, reason);
}

}  // namespace

void SayRead(Source source) { Reach(GetStatement(source).report, State::Read); }

void Say(Source source, State state, const char* remedy, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  SayAll(source, state, remedy, format, arguments);
  va_end(arguments);
}

void Accept(Source source) { accepted.Add(source); }

bool IsAccepted(Source source) { return accepted.Contains(source); }

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
  SayAll(source_, State::Read, "", format, arguments);
  va_end(arguments);
}

void SourceScope::ReadWithRemark(const char* remedy, const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  SayAll(source_, State::Read, remedy, format, arguments);
  va_end(arguments);
}

void SourceScope::Absent(const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  SayAll(source_, State::Absent, "", format, arguments);
  va_end(arguments);
}

void SourceScope::Unwatched(const char* remedy, const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  SayAll(source_, State::Unwatched, remedy, format, arguments);
  va_end(arguments);
}

void SourceScope::Failed(const char* remedy, const char* format, ...) {
  said_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  SayAll(source_, State::Failed, remedy, format, arguments);
  va_end(arguments);
}

}  // namespace source_status

void VELAPlatformSourcesReset(void) {
  source_status::statements = {};
  source_status::accepted = {};
  source_status::ForgetNotes();
}

int VELAPlatformSources(VELASourceReport* reports, int capacity) {
  using namespace source_status;
  using std::chrono::duration_cast, std::chrono::microseconds;
  for (int i = 0; i < std::min(capacity, kSourceCount); ++i) {
    const auto index = static_cast<std::size_t>(i);
    const Statement& statement = statements[index];
    VELASourceReport& report = reports[i] = statement.report;
    report.name = common::kSourceNames[index];
    report.microseconds =
        static_cast<std::uint32_t>(duration_cast<microseconds>(statement.time).count());
    const bool wanted = !accepted.Contains(static_cast<Source>(i));
    if (report.state == State::Unwatched && !wanted) report.state = State::Accepted;
  }
  return kSourceCount;
}
