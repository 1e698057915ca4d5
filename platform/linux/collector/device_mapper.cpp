// Mirrors, RAID volumes and thin pools, asked of the kernel's device mapper without
// flushing anything.
#include <libdevmapper.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/linux/collector/mapping_status.h"
#include "platform/linux/collector/parts.h"

namespace linux_platform {
namespace {

// The library opens this node, and would make it where it is missing.
constexpr const char* kControl = "/dev/mapper/control";
constexpr const char* kHealthTexts[] = {"normal", "abnormal", "danger"};

using Task = std::unique_ptr<dm_task, void (*)(dm_task*)>;

Task Run(int kind, const char* name) {
  Task task(dm_task_create(kind), dm_task_destroy);
  if (!task) throw std::bad_alloc();
  if (name != nullptr) dm_task_set_name(task.get(), name);
  dm_task_no_flush(task.get());
  dm_task_no_open_count(task.get());
  errno = 0;
  if (!dm_task_run(task.get())) task.reset();
  return task;
}

std::vector<std::string> Names(dm_task* list) {
  std::vector<std::string> names;
  const auto* entry = dm_task_get_names(list);
  if (entry == nullptr || entry->dev == 0) return names;
  for (;;) {
    names.emplace_back(entry->name);
    if (entry->next == 0) return names;
    entry = reinterpret_cast<const dm_names*>(reinterpret_cast<const char*>(entry) + entry->next);
  }
}

// The worst of the mapping's targets; nothing when none has a health of its own.
std::optional<MappingStatus> Judge(dm_task* task) {
  std::optional<MappingStatus> worst;
  void* next = nullptr;
  do {
    std::uint64_t start = 0, length = 0;
    char *type = nullptr, *parameters = nullptr;
    next = dm_get_next_target(task, next, &start, &length, &type, &parameters);
    if (type == nullptr || parameters == nullptr) continue;
    auto status = JudgeMapping(type, parameters);
    if (status && (!worst || status->health > worst->health)) worst = std::move(status);
  } while (next != nullptr);
  return worst;
}

Json::Value EntryOf(dm_task* task, const std::string& name, const MappingStatus& status) {
  dm_info info = {};
  dm_task_get_info(task, &info);
  const char* uuid = dm_task_get_uuid(task);
  Json::Value entry(Json::objectValue);
  entry["name"] = name;
  entry["uuid"] = uuid != nullptr ? uuid : "";
  entry["device"] = std::to_string(info.major) + ":" + std::to_string(info.minor);
  entry["kind"] = status.kind;
  entry["health"] = kHealthTexts[static_cast<int>(status.health)];
  if (!status.why.empty()) entry["why"] = status.why;
  return entry;
}

}  // namespace

Json::Value CollectDeviceMapper() {
  if (access(kControl, F_OK) != 0) return {};
  SilenceDeviceMapper();
  const Task list = Run(DM_DEVICE_LIST, nullptr);
  if (!list) {
    const std::string why = errno != 0 ? std::strerror(errno) : "the kernel refused";
    return Unread("the device mapper did not list its devices: " + why);
  }
  Json::Value members(Json::objectValue);
  Json::Value& objects = members["objects"] = Json::Value(Json::arrayValue);
  for (const std::string& name : Names(list.get())) {
    const Task task = Run(DM_DEVICE_STATUS, name.c_str());
    if (!task) {
      // One that has gone since is no trouble.
      if (errno != ENXIO) members["trouble"] = name + " did not tell its status";
      continue;
    }
    const auto status = Judge(task.get());
    if (!status) continue;
    if (!status->understood) members["trouble"] = name + ": its status line was not understood";
    objects.append(EntryOf(task.get(), name, *status));
  }
  return members;
}

}  // namespace linux_platform
