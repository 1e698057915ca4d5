// Errors of memory with a checksum (ECC), as the kernel's EDAC drivers have counted them since the
// machine started.
#include "platform/linux/base/sysfs.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"

namespace linux_platform {
namespace {

// `which`: "ce" or "ue". A controller counts errors, too, that it can lay to no module.
void TellErrors(const std::string& controller, const std::string& which, const NoteKind& kind) {
  const std::string folder = Sys("/devices/system/edac/mc/", controller);
  std::int64_t left = NumberAttribute(Concatenate(folder, "/", which, "_count")).value_or(0);
  if (left <= 0) return;
  for (const std::string& name : NamesIn(folder)) {
    if (!name.starts_with("dimm")) continue;
    const std::string module = Within(folder, name);
    const std::int64_t count =
        NumberAttribute(Concatenate(module, "/dimm_", which, "_count")).value_or(0);
    if (count <= 0) continue;
    const std::string label = Attribute(Within(module, "dimm_label"));
    Tell(kind, label.empty() ? Concatenate(controller, " ", name) : label, "", count);
    left -= count;
  }
  if (left > 0) Tell(kind, controller, "", left);
}

}  // namespace

void TellMemoryErrors() {
  for (const std::string& name : NamesIn(Sys("/devices/system/edac/mc"))) {
    if (!name.starts_with("mc")) continue;
    TellErrors(name, "ue", kMemoryUncorrected);
    TellErrors(name, "ce", kMemoryCorrected);
  }
}

}  // namespace linux_platform
