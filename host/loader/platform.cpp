#include "host/loader/platform.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>

#include "host/loader/operating_system.h"
#include "host/text/failure.h"

namespace host {
namespace {

// What is handed over one by one; none by a platform that lacks the function.
template <typename Element>
std::vector<Element> ReadAll(void (*handOver)(void (*)(void*, const Element*), void*)) {
  std::vector<Element> list;
  const auto take = [](void* taker, const Element* element) {
    static_cast<std::vector<Element>*>(taker)->push_back(*element);
  };
  if (handOver != nullptr) handOver(take, &list);
  return list;
}

}  // namespace

Platform::Platform(const std::string& path, Scope scope)
    : library_(path, RTLD_NOW | (scope == Scope::All ? RTLD_GLOBAL : RTLD_LOCAL), "the platform",
               "Build it, or name another with --platform."),
      hold_(library_.FindFunction<decltype(hold_)>("VELAPlatformHoldRequest")),
      release_(library_.FindFunction<decltype(release_)>("VELAPlatformReleaseRequest")),
      reset_(library_.FindFunction<decltype(reset_)>("VELAPlatformSourcesReset")),
      sources_(library_.FindFunction<decltype(sources_)>("VELAPlatformSources")),
      notes_(library_.FindFunction<decltype(notes_)>("VELAPlatformNotes")),
      parts_(library_.FindFunction<decltype(parts_)>("VELAPlatformParts")),
      evidence_(library_.FindFunction<decltype(evidence_)>("VELAPlatformEvidence")),
      snapshotTime_(library_.FindFunction<decltype(snapshotTime_)>("VELAPlatformSnapshotTime")),
      open_(library_.FindFunction<decltype(open_)>("VELASimulatorOpen")),
      close_(library_.FindFunction<decltype(close_)>("VELASimulatorClose")),
      enter_(library_.FindFunction<decltype(enter_)>("VELASimulatorEnter")) {
  using OperatingSystem = decltype(&VELAPlatformOperatingSystem);
  const auto answers = library_.FindFunction<OperatingSystem>("VELAPlatformOperatingSystem");
  UseOperatingSystem(answers != nullptr ? answers() : nullptr);
}

SimulatedMachine Platform::OpenScenario(const std::string& path) const {
  if (open_ == nullptr || close_ == nullptr || enter_ == nullptr) {
    throw Failure(kUsage, "Cannot play the scenario " + path + ": the platform " + Path() +
                              " is a real machine's. Leave --platform out to use the simulator.");
  }
  std::array<char, 1024> message = {};
  VELASimulatedMachine* machine = open_(path.c_str(), message.data(), message.size());
  if (machine == nullptr) {
    throw Failure(kNoInput, "Cannot play the scenario " + path + ": " + message.data());
  }
  return {machine, close_};
}

void Platform::StartRequest(const SimulatedMachine& machine) const {
  if (reset_ != nullptr) reset_();
  if (enter_ != nullptr) enter_(machine.get());
}

void Platform::ReadSources(std::vector<VELASourceReport>& reports) const {
  reports.clear();
  if (sources_ == nullptr) return;
  reports.resize(static_cast<std::size_t>(sources_(nullptr, 0)));
  sources_(reports.data(), static_cast<int>(reports.size()));
}

std::vector<VELANote> Platform::ReadNotes() const {
  if (notes_ == nullptr) return {};
  std::vector<VELANote> notes(kVELANotes);
  notes.resize(
      static_cast<std::size_t>(std::clamp(notes_(notes.data(), kVELANotes), 0, kVELANotes)));
  return notes;
}

std::vector<VELAPart> Platform::ReadParts() const { return ReadAll<VELAPart>(parts_); }

std::vector<VELAEvidence> Platform::ReadEvidence() const {
  return ReadAll<VELAEvidence>(evidence_);
}

std::int64_t Platform::ReadSnapshotTime() const {
  return snapshotTime_ != nullptr ? snapshotTime_() : -1;
}

HeldRequest::HeldRequest(const Platform& platform) : platform_(platform) {
  if (platform_.hold_ != nullptr) platform_.hold_();
}

HeldRequest::~HeldRequest() {
  if (platform_.release_ != nullptr) platform_.release_();
}

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

std::string Recorder::GetState(const std::string& why) const { return state_(why.c_str()); }

}  // namespace host
