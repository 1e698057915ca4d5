// What stands between a platform and the modules, and keeps what the machine answered.
#pragma once

#include <string>

#include "host/loader/library.h"
#include "host/loader/platform.h"
#include "platform/recorder/recorder.h"

namespace host {

class Recorder {
 public:
  // Opens it for all later libraries; `platform` must not be theirs to find. From then on it
  // answers for the operating system, too. Throws Failure.
  Recorder(const std::string& path, const Platform& platform);

  // A scenario's state.json; see VELARecorderState.
  std::string State(const std::string& why) const;

 private:
  Library library_;
  decltype(&VELARecorderState) state_;
};

}  // namespace host
