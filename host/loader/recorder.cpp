#include "host/loader/recorder.h"

#include <dlfcn.h>

#include "host/loader/operating_system.h"
#include "host/text/failure.h"

namespace host {

Recorder::Recorder(const std::string& path, const Platform& platform)
    : library_(path, RTLD_NOW | RTLD_GLOBAL, "the recorder", "Build or install the whole program."),
      state_(library_.FindFunction<decltype(state_)>("VELARecorderState")) {
  const auto start = library_.FindFunction<decltype(&VELARecorderStart)>("VELARecorderStart");
  const auto answers =
      library_.FindFunction<decltype(&VELARecorderOperatingSystem)>("VELARecorderOperatingSystem");
  if (state_ == nullptr || start == nullptr || answers == nullptr) {
    throw Failure(kUnavailable, path + " is no recorder. Build or install the whole program.");
  }
  start(platform.Path().c_str(), GetOperatingSystem());
  UseOperatingSystem(answers());
}

std::string Recorder::State(const std::string& why) const { return state_(why.c_str()); }

}  // namespace host
