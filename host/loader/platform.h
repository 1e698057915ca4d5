// The platform library, the only door to the machine, and the recorder in front of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/loader/library.h"
#include "platform/recorder/recorder.h"
#include "platform/simulator/simulator.h"
#include "platform/status/collected.h"
#include "platform/status/evidence.h"
#include "platform/status/notes.h"
#include "platform/status/parts.h"
#include "platform/status/request_hold.h"
#include "platform/status/source_status.h"

namespace host {

// One machine of a scenario; given back to the simulator with the last owner.
using SimulatedMachine = std::shared_ptr<VELASimulatedMachine>;

class Platform {
 public:
  // Whether libraries that are opened later find its functions, or only who asks for them.
  enum class Scope { All, Private };

  // Throws Failure.
  explicit Platform(const std::string& path, Scope scope = Scope::All);

  // Throws Failure: kUsage when this platform plays no scenarios, kNoInput with file,
  // line and member when the scenario cannot be used.
  SimulatedMachine OpenScenario(const std::string& path) const;

  // Starts a request on this thread, on `machine`; null: the platform's own.
  void StartRequest(const SimulatedMachine& machine) const;
  // What the sources of this thread's request said; none on a platform that tells nothing.
  void ReadSources(std::vector<VELASourceReport>& reports) const;

  // What is worth a note on the machine of this thread's request; looked for now.
  std::vector<VELANote> ReadNotes() const;
  // Who the names in an answer stand for, and why something was not well; looked for now.
  std::vector<VELAPart> ReadParts() const;
  std::vector<VELAEvidence> ReadEvidence() const;
  // When the collector last looked at that machine, in seconds since 1970; -1: never.
  std::int64_t ReadSnapshotTime() const;

  const std::string& Path() const { return library_.Path(); }

 private:
  friend class HeldRequest;
  Library library_;
  decltype(&VELAPlatformHoldRequest) hold_;
  decltype(&VELAPlatformReleaseRequest) release_;
  decltype(&VELAPlatformSourcesReset) reset_;
  decltype(&VELAPlatformSources) sources_;
  decltype(&VELAPlatformNotes) notes_;
  decltype(&VELAPlatformParts) parts_;
  decltype(&VELAPlatformEvidence) evidence_;
  decltype(&VELAPlatformSnapshotTime) snapshotTime_;
  decltype(&VELASimulatorOpen) open_;
  decltype(&VELASimulatorClose) close_;
  decltype(&VELASimulatorEnter) enter_;
};

// While it lives, what this thread asks of the platform, answer, parts and evidence, comes from one
// look at the machine.
class HeldRequest {
 public:
  explicit HeldRequest(const Platform& platform);
  ~HeldRequest();
  HeldRequest(const HeldRequest&) = delete;
  HeldRequest& operator=(const HeldRequest&) = delete;

 private:
  const Platform& platform_;
};

// What stands between a platform and the modules, and keeps what the machine answered.
class Recorder {
 public:
  // Opens it for all later libraries; `platform` must not be theirs to find. From then on it
  // answers for the operating system, too. Throws Failure.
  Recorder(const std::string& path, const Platform& platform);

  // A scenario's state.json; see VELARecorderState.
  std::string GetState(const std::string& why) const;

 private:
  Library library_;
  decltype(&VELARecorderState) state_;
};

}  // namespace host
