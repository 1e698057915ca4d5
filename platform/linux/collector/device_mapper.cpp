// Mappings that can lose something by themselves, asked of the kernel's device mapper without
// flushing anything.
#include <libdevmapper.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/linux/collector/mapping_status.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/storage/mapping_snapshot.h"

namespace linux_platform {
namespace {

// The library opens this node, and would make it where it is missing.
constexpr const char* kControl = "/dev/mapper/control";

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

std::vector<std::string> ReadNames(dm_task* list) {
  std::vector<std::string> names;
  const auto* entry = dm_task_get_names(list);
  if (entry == nullptr || entry->dev == 0) return names;
  for (;;) {
    names.emplace_back(entry->name);
    if (entry->next == 0) return names;
    entry = reinterpret_cast<const dm_names*>(reinterpret_cast<const char*>(entry) + entry->next);
  }
}

std::string_view GetUuid(dm_task* task) {
  const char* uuid = dm_task_get_uuid(task);
  return uuid != nullptr ? uuid : "";
}

// The mapping with the worst of its targets; nothing when none has a health of its own.
std::optional<MappingStatus> JudgeTargets(dm_task* task, const std::string& name) {
  if (IsMissingPart(name, GetUuid(task)))
    return MappingStatus{.kind = "missing",
                         .health = Health::Danger,
                         .why = "the physical volume that held it is missing"};
  std::vector<MappingTarget> targets;
  void* next = nullptr;
  do {
    std::uint64_t start = 0, length = 0;
    char *type = nullptr, *parameters = nullptr;
    next = dm_get_next_target(task, next, &start, &length, &type, &parameters);
    if (type != nullptr && parameters != nullptr) targets.push_back({type, parameters});
  } while (next != nullptr);
  return JudgeMapping(targets);
}

Mapping Describe(dm_task* task, const std::string& name, const MappingStatus& status) {
  dm_info info = {};
  dm_task_get_info(task, &info);
  return {name,
          std::string(GetUuid(task)),
          std::to_string(info.major) + ":" + std::to_string(info.minor),
          status.kind,
          status.health,
          status.why,
          status.failed,
          status.of};
}

}  // namespace

Json::Value CollectDeviceMapper() {
  if (access(kControl, F_OK) != 0) return {};
  SilenceDeviceMapper();
  const Task list = Run(DM_DEVICE_LIST, nullptr);
  if (!list) {
    const std::string why = errno != 0 ? std::strerror(errno) : "the kernel refused";
    return MakeError("the device mapper did not list its devices: " + why);
  }
  MappingSnapshot snapshot;
  for (const std::string& name : ReadNames(list.get())) {
    const Task task = Run(DM_DEVICE_STATUS, name.c_str());
    if (!task) {
      // One that has gone since is no trouble.
      if (errno != ENXIO) snapshot.trouble = name + " did not tell its status";
      continue;
    }
    const auto status = JudgeTargets(task.get(), name);
    if (!status) continue;
    if (!status->understood) snapshot.trouble = name + ": its status line was not understood";
    snapshot.mappings.push_back(Describe(task.get(), name, *status));
  }
  return snapshot.ToJson();
}

}  // namespace linux_platform
