#include "platform/linux/storage/external_capacity.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/storage/program_mount_snapshot.h"

namespace linux_platform {
namespace {

class CollectedSizes {
 public:
  Trouble Measure(ExternalVolume& volume) {
    if (!state_) Read();
    const ProgramMount* mount = snapshot_.FindMount(volume.path);
    if (mount == nullptr) return failure_.IsNone() ? Trouble("it did not answer") : failure_;
    volume.capacity.size = mount->total;
    volume.capacity.available = mount->free;
    return {};
  }

 private:
  void Read() {
    std::string reason;
    state_ = ReadSnapshot(snapshot_, reason);
    failure_ = *state_ == SnapshotState::Absent ? MissCollector("only root asks it")
                                                : ToTrouble(*state_, std::move(reason));
  }

  std::optional<SnapshotState> state_;  // none: not read yet
  ProgramMountSnapshot snapshot_;
  Trouble failure_;
};

}  // namespace

void MeasureExternal(std::vector<ExternalVolume>& volumes) {
  CollectedSizes collected;
  for (ExternalVolume& volume : volumes) {
    if (volume.isProgram)
      volume.trouble = collected.Measure(volume);
    else if (!ReadCapacity(volume.path, volume.device, volume.capacity))
      volume.trouble = std::strerror(errno);
  }
}

}  // namespace linux_platform
