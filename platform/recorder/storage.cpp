// The storage manager, external volumes, expansion units and the SAN tool.
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>

#include <vela_storage.h>
#include <velac.h>

#include "common/text.h"
#include "platform/recorder/recording.h"

using common::ViewText;
using recorder::FindFunction;
using recorder::Recording;

namespace {

// A volume that nobody listed has no place in the machine.
simulator::Volume& VolumeAt(std::string_view path) {
  static simulator::Volume unlisted;
  for (auto& volume : Recording().volumes)
    if (volume.path == path) return volume;
  return unlisted;
}

simulator::ExpansionUnit FromRecord(VELA_EBOX_INFO& record) {
  simulator::ExpansionUnit unit;
  unit.slot = record.slotIndex;
  unit.number = record.unitNumber;
  unit.naming = record.name != nullptr;
  const char* name = unit.naming ? record.name(record.context) : nullptr;
  if (name != nullptr) unit.name = name;
  if (record.power == nullptr) {
    unit.power.reset();
  } else {
    unit.power->word = 0;
    unit.power->result = record.power(record.context, &unit.power->word);
  }
  return unit;
}

// The bytes of the SAN tool once more, for the module.
struct Replay {
  std::string bytes;
  std::size_t position = 0;
};

ssize_t ReadReplay(void* cookie, char* buffer, std::size_t size) {
  auto& replay = *static_cast<Replay*>(cookie);
  const std::size_t count = replay.bytes.copy(buffer, size, replay.position);
  replay.position += count;
  return static_cast<ssize_t>(count);
}

int CloseReplay(void* cookie) {
  delete static_cast<Replay*>(cookie);
  return 0;
}

std::string ReadAll(FILE* stream) {
  std::string bytes;
  std::array<char, 4096> part;
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), stream))
    bytes.append(part.data(), count);
  return bytes;
}

}  // namespace

namespace VELA::ZRT {

namespace STORAGE_WEBUTILS {

bool Volume::IsSystemVolCrashed() {
  return Recording().systemVolumeCrashed =
             FindFunction<bool()>("_ZN4VELA3ZRT16STORAGE_WEBUTILS6Volume18IsSystemVolCrashedEv")();
}

std::string Volume::ToUIUsbSataVolumeStr(const std::string& name) {
  return FindFunction<std::string(const std::string&)>(
      "_ZN4VELA3ZRT16STORAGE_WEBUTILS6Volume20ToUIUsbSataVolumeStrERKNSt7__cxx1112basic_"
      "stringIcSt11char_traitsIcESaIcEEE")(name);
}

}  // namespace STORAGE_WEBUTILS

namespace STORAGE_MANAGER {

Space::Space(int selection) {
  FindFunction<void(Space*, int)>("_ZN4VELA3ZRT15STORAGE_MANAGER5SpaceC1Ei")(this, selection);
}

Space::~Space() { FindFunction<void(Space*)>("_ZN4VELA3ZRT15STORAGE_MANAGER5SpaceD1Ev")(this); }

const SpaceRecord* Space::GetAll() const {
  const auto* list = FindFunction<const SpaceRecord*(const Space*)>(
      "_ZNK4VELA3ZRT15STORAGE_MANAGER5Space6GetAllEv")(this);
  Recording().volumes.clear();
  for (const SpaceRecord* record = list; record != nullptr; record = record->next) {
    auto& volume = Recording().volumes.emplace_back();
    volume.path = ViewText(record->path);
    volume.type = record->type;
  }
  return list;
}

std::string Space::GetOverviewStatus() {
  return Recording().overview = FindFunction<std::string()>(
             "_ZN4VELA3ZRT15STORAGE_MANAGER5Space17GetOverviewStatusB5cxx11Ev")();
}

Disk::Disk(bool first, bool second) {
  FindFunction<void(Disk*, bool, bool)>("_ZN4VELA3ZRT15STORAGE_MANAGER4DiskC1Ebb")(this, first,
                                                                                   second);
}

Disk::~Disk() { FindFunction<void(Disk*)>("_ZN4VELA3ZRT15STORAGE_MANAGER4DiskD1Ev")(this); }

bool Disk::DumpDisks(const Space& space, Json::Value& array) {
  const Json::ArrayIndex before = array.isArray() ? array.size() : 0;
  const bool dumped = FindFunction<bool(Disk*, const Space&, Json::Value&)>(
      "_ZN4VELA3ZRT15STORAGE_MANAGER4Disk9DumpDisksERKNS1_5SpaceERN4Json5ValueE")(this, space,
                                                                                  array);
  Recording().disksFail = !dumped;
  Recording().disks.Clear();
  for (Json::ArrayIndex i = before; array.isArray() && i < array.size(); ++i)
    Recording().disks.Append(array[i]);
  return dumped;
}

bool Volume::GetVolumeFSInfo(const char* path, _tag_volume_usage& usage, FS_INFO*& info) {
  const bool read = FindFunction<bool(const char*, _tag_volume_usage&, FS_INFO*&)>(
      "_ZN4VELA3ZRT15STORAGE_MANAGER6Volume15GetVolumeFSInfoEPKcR17_tag_volume_usageRP7FS_INFO")(
      path, usage, info);
  auto& volume = VolumeAt(path);
  volume.fails = !read;
  if (!read) return read;
  volume.used = usage.u0;
  volume.total = usage.u1;
  volume.inodes = usage.u2;
  volume.freeInodes = usage.u3;
  return read;
}

std::string Volume::ToJsonSpaceStatus(const SpaceRecord& record) {
  return VolumeAt(ViewText(record.path)).status = FindFunction<std::string(const SpaceRecord&)>(
             "_ZN4VELA3ZRT15STORAGE_MANAGER6Volume17ToJsonSpaceStatusB5cxx11ERKNS1_"
             "11SpaceRecordE")(record);
}

std::string StorageUtil::ToUISpaceID(int type, const char* path) {
  return VolumeAt(path).spaceId = FindFunction<std::string(int, const char*)>(
             "_ZN4VELA3ZRT15STORAGE_MANAGER11StorageUtil11ToUISpaceIDB5cxx11EiPKc")(type, path);
}

}  // namespace STORAGE_MANAGER
}  // namespace VELA::ZRT

float VELAVolumeCapWarnPctGet(const char* path) {
  return VolumeAt(path).warningShare = FindFunction<float(const char*)>(__func__)(path);
}

void FSInfoFree(FS_INFO* info) { FindFunction<void(FS_INFO*)>(__func__)(info); }

int VLIBCMaxDiskGet() { return Recording().maxDisks = FindFunction<int()>(__func__)(); }

VELA_MOUNT_VOL_INFO* VELAMountVolAllEnum(int first, int volumeClass, int last) {
  auto* list = FindFunction<decltype(VELAMountVolAllEnum)>(__func__)(first, volumeClass, last);
  auto& volumes = volumeClass == 8 ? Recording().esata : Recording().usb;
  volumes.clear();
  // The simulator's records carry the name that people see.
  for (const auto* record = list; record != nullptr; record = record->next) {
    const std::string name(ViewText(record->name));
    volumes.push_back({VELA::ZRT::STORAGE_WEBUTILS::Volume::ToUIUsbSataVolumeStr(name),
                       record->totalSize, record->freeSize});
  }
  return list;
}

void VELAMountVolInfoFree(VELA_MOUNT_VOL_INFO* list) {
  FindFunction<decltype(VELAMountVolInfoFree)>(__func__)(list);
}

int VELAUsbIsCardreader(const char* name) {
  const int result = FindFunction<decltype(VELAUsbIsCardreader)>(__func__)(name);
  const bool card = result != 0;
  for (auto& volume : Recording().usb)
    if (volume.name == name && card != simulator::IsNamedLikeACard(name)) volume.cardReader = card;
  return result;
}

int VELAEBoxInfoEnum(VELA_EBOX_INFO** list) {
  const int result = FindFunction<decltype(VELAEBoxInfoEnum)>(__func__)(list);
  Recording().unitsFail = result == -1;
  Recording().units.clear();
  for (auto* record = result == -1 ? nullptr : *list; record != nullptr; record = record->next)
    Recording().units.push_back(FromRecord(*record));
  return result;
}

void VELAEBoxInfoEnumFree(VELA_EBOX_INFO* list) {
  FindFunction<decltype(VELAEBoxInfoEnumFree)>(__func__)(list);
}

int VLIBCFileExist(const char* path) {
  const int exists = FindFunction<decltype(VLIBCFileExist)>(__func__)(path);
  Recording().sanOutput.reset();
  Recording().sanFails = exists != 0;  // until it has been started
  return exists;
}

// The module's tool takes one argument; up to three are handed on.
FILE* VLIBCPopen(const char* path, const char* mode, ...) {
  std::array<const char*, 4> arguments = {};
  std::va_list given;
  va_start(given, mode);
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i)
    if ((arguments[i] = va_arg(given, const char*)) == nullptr) break;
  va_end(given);
  FILE* stream = FindFunction<decltype(VLIBCPopen)>(__func__)(
      path, mode, arguments[0], arguments[1], arguments[2], arguments[3]);
  if (stream == nullptr) return nullptr;
  std::unique_ptr<Replay> replay(new Replay{ReadAll(stream)});
  FindFunction<decltype(VLIBCPclose)>("VLIBCPclose")(stream);
  Recording().sanFails = false;
  Recording().sanOutput = replay->bytes;
  FILE* again = fopencookie(replay.get(), "r", {ReadReplay, nullptr, nullptr, CloseReplay});
  if (again == nullptr) throw std::bad_alloc();
  (void)replay.release();  // the stream's now
  return again;
}

int VLIBCPclose(FILE* stream) { return std::fclose(stream); }
