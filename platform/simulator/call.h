// What every simulated platform call begins with.
#pragma once

#include "platform/simulator/machine.h"
#include "platform/status/source_status.h"

namespace simulator {

// The machine that is asked, with the call written into its ledger. The status of the source
// becomes "read", unless the call reports otherwise; a machine in memory takes no time.
class Call {
 public:
  Call(source_status::Source source, const char* name) : source_(source), machine_(Simulated()) {
    if (machine_.ledger.onCall) machine_.ledger.onCall(name);
    if (!machine_.sources.empty()) ReportStatedStatus();
  }
  ~Call() {
    if (!reported_) source_status::SayRead(source_);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Machine* operator->() const { return &machine_; }
  Machine& operator*() const { return machine_; }

  void Fail(const char* what) {
    using source_status::State;
    if (!reported_)
      source_status::Say(source_, State::Failed, "", "%s, as the scenario says", what);
    reported_ = true;
  }
  void Absent(const char* what) {
    if (!reported_) source_status::Say(source_, source_status::State::Absent, "", "%s", what);
    reported_ = true;
  }

 private:
  void ReportStatedStatus() {
    const auto stated = machine_.sources.find(std::string_view(common::SourceName(source_)));
    if (stated == machine_.sources.end()) return;
    ReportStatus(source_, stated->second);
    reported_ = true;
  }

  source_status::Source source_;
  Machine& machine_;
  bool reported_ = false;
};

inline const char* OrNull(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

// Copies `text` into a fixed field as the platform does: a text that fills the whole
// field has no NUL.
template <std::size_t Size>
void CopyToField(const std::string& text, char (&field)[Size]) {
  text.copy(field, Size);
  if (text.size() < Size) field[text.size()] = '\0';
}

}  // namespace simulator
