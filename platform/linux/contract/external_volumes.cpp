// The mounted external volumes, with the sizes that their file systems give.
#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/linux/base/log_once.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/storage/program_mount_snapshot.h"
#include "platform/status/source_status.h"
#include "vela_storage.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr int kUsbClass = 4, kEsataClass = 8;

constinit LogOnce usbFailures("USB volumes", "journalctl -k -b"),
    esataFailures("eSATA volumes", "journalctl -k -b");

bool IsOfClass(DiskClass kind, int volumeClass) {
  return volumeClass == (kind == DiskClass::Esata ? kEsataClass : kUsbClass);
}

// A program's file system is asked by the collector alone, which may wait for it.
class CollectedSizes {
 public:
  bool FindCapacity(const std::string& path, Capacity& capacity, Trouble& trouble) {
    if (!state_) {
      std::string reason;
      state_ = ReadSnapshot(snapshot_, reason);
      failure_ = *state_ == SnapshotState::Absent ? MissCollector("only root asks it")
                                                  : ToTrouble(*state_, std::move(reason));
    }
    if (const ProgramMount* mount = snapshot_.FindMount(path)) {
      capacity.size = mount->total;
      capacity.available = mount->free;
      return true;
    }
    trouble = failure_.IsNone() ? Trouble("it did not answer") : failure_;
    return false;
  }

 private:
  std::optional<SnapshotState> state_;  // none: not read yet
  ProgramMountSnapshot snapshot_;
  Trouble failure_;
};

bool Measure(const ExternalVolume& volume, CollectedSizes& collected, Capacity& capacity,
             Trouble& trouble) {
  if (volume.isProgram) return collected.FindCapacity(volume.path, capacity, trouble);
  if (ReadCapacity(volume.path, volume.device, capacity)) return true;
  trouble = std::string(std::strerror(errno));
  return false;
}

}  // namespace

VELA_MOUNT_VOL_INFO* VELAMountVolAllEnum(int, int volumeClass, int) {
  SourceScope scope(Source::ExternalVolumes);
  const RequestScope request;
  const StorageView& view = request->GetStorage();
  Trouble failure = view.failure;

  auto records = std::make_unique<VELA_MOUNT_VOL_INFO[]>(view.external.size());
  CollectedSizes collected;
  std::size_t count = 0;
  for (const ExternalVolume& volume : view.external) {
    if (!IsOfClass(volume.kind, volumeClass)) continue;
    Capacity capacity;
    Trouble trouble;
    if (!Measure(volume, collected, capacity, trouble)) {
      failure = trouble;
      failure.reason = "the capacity of " + volume.path + " could not be read: " + trouble.reason;
      continue;
    }
    VELA_MOUNT_VOL_INFO& record = records[count];
    volume.name.copy(record.name, sizeof record.name - 1);
    record.totalSize = capacity.size;
    record.freeSize = capacity.available;
    if (count > 0) records[count - 1].next = &record;
    ++count;
  }
  LogOnce& failures = volumeClass == kUsbClass ? usbFailures : esataFailures;
  failures.Report(scope, failure);
  return count > 0 ? records.release() : nullptr;
}

void VELAMountVolInfoFree(VELA_MOUNT_VOL_INFO* list) { delete[] list; }

// The record's name already is the user's, and tells the kind.
std::string VELA::ZRT::STORAGE_WEBUTILS::Volume::ToUIUsbSataVolumeStr(const std::string& name) {
  return name;
}

int VELAUsbIsCardreader(const char* name) {
  return name != nullptr && std::string_view(name).starts_with("sdshare") ? 1 : 0;
}
