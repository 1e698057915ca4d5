// The mounted external volumes, with the sizes that their file systems give.
#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/linux/base/log_once.h"
#include "platform/linux/contract/request.h"
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

}  // namespace

VELA_MOUNT_VOL_INFO* VELAMountVolAllEnum(int, int volumeClass, int) {
  SourceScope scope(Source::ExternalVolumes);
  const RequestScope request;
  const StorageView& view = request->GetStorage();
  Trouble failure = view.failure;

  auto records = std::make_unique<VELA_MOUNT_VOL_INFO[]>(view.external.size());
  std::size_t count = 0;
  for (const ExternalVolume& volume : view.external) {
    if (!IsOfClass(volume.kind, volumeClass)) continue;
    if (!volume.trouble.IsNone()) {
      failure = volume.trouble;
      failure.reason =
          "the capacity of " + volume.path + " could not be read: " + volume.trouble.reason;
      continue;
    }
    VELA_MOUNT_VOL_INFO& record = records[count];
    volume.name.copy(record.name, sizeof record.name - 1);
    record.totalSize = volume.capacity.size;
    record.freeSize = volume.capacity.available;
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
