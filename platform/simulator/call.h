// What every simulated platform call begins with.
#pragma once

#include "platform/simulator/machine.h"
#include "platform/status/source_status.h"

namespace simulator {

// The machine that is asked, with the call written into its ledger. In the platform's second
// voice its source was read, unless the call says otherwise; a machine in memory takes no time.
class Call {
 public:
  Call(source_status::Source source, const char* name) : source_(source), machine_(Simulated()) {
    if (machine_.ledger.calls != nullptr) machine_.ledger.calls->emplace_back(name);
    if (!machine_.sources.empty()) SayWhatIsStated();
  }
  ~Call() {
    if (!said_) source_status::SayRead(source_);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Machine* operator->() const { return &machine_; }
  Machine& operator*() const { return machine_; }

  void Fail(const char* what) {
    if (!said_) source_status::SayFailed(source_, "%s, as the scenario says", what);
    said_ = true;
  }
  void Absent(const char* what) {
    if (!said_) source_status::SayAbsent(source_, "%s", what);
    said_ = true;
  }

 private:
  void SayWhatIsStated() {
    const auto stated = machine_.sources.find(std::string_view(common::SourceName(source_)));
    if (stated == machine_.sources.end()) return;
    const auto& [state, reason] = stated->second;
    if (state == "absent") Absent(reason.c_str());
    if (state == "failed") source_status::SayFailed(source_, "%s", reason.c_str());
    said_ = state != "read";
  }

  source_status::Source source_;
  Machine& machine_;
  bool said_ = false;
};

// Copies `text` into a fixed field as the platform does: a text that fills the whole
// field has no NUL.
template <std::size_t Size>
void Put(const std::string& text, char (&field)[Size]) {
  text.copy(field, Size);
  if (text.size() < Size) field[text.size()] = '\0';
}

}  // namespace simulator
