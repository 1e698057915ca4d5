#include "platform/linux/collector/mapping_words.h"

#include <vector>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

MappingStatus Make(const char* kind, Health health, std::string why) {
  MappingStatus status;
  status.kind = kind;
  status.health = health;
  status.why = std::move(why);
  return status;
}

MappingStatus MakeNotUnderstood(const char* kind) {
  MappingStatus status;
  status.kind = kind;
  status.understood = false;
  return status;
}

// "8:16"
bool IsDeviceNumber(std::string_view word) {
  const std::size_t colon = word.find(':');
  return colon != word.npos && ToNumber(word.substr(0, colon)) && ToNumber(word.substr(colon + 1));
}

}  // namespace

// "2 0 0 0 2 1 A 0 1 2 8:16 F 3 0 E 0 1 2 8:32 A 0 1": how many arguments stand between the paths
// is each path selector's own matter; a path is a device's number and A for active or F.
MappingStatus JudgeMultipath(const std::string& parameters) {
  const std::vector<std::string_view> words = SplitList(parameters);
  std::int64_t paths = 0, failed = 0;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    if (!IsDeviceNumber(words[i]) || (words[i + 1] != "A" && words[i + 1] != "F")) continue;
    ++paths;
    if (words[i + 1] == "F") ++failed;
  }
  // Features and hardware handler come first, as counts; then the number of groups.
  if (words.size() < 4 || !ToNumber(words[0])) return MakeNotUnderstood("multipath");
  if (paths == 0) return Make("multipath", Health::Danger, "it has no path left");
  if (failed == paths)
    return Make("multipath", Health::Danger, "all " + std::to_string(paths) + " paths failed");
  MappingStatus status = Make("multipath", Health::Normal, "");
  status.failed = failed;
  status.of = paths;
  return status;
}

// "0 2097152 -": mismatches since it was put together, sectors, progress.
MappingStatus JudgeIntegrity(const std::string& parameters) {
  const std::vector<std::string_view> words = SplitList(parameters);
  const auto mismatches = words.size() < 2 ? std::nullopt : ToNumber(words[0]);
  if (!mismatches) return MakeNotUnderstood("integrity");
  if (*mismatches == 0) return Make("integrity", Health::Normal, "");
  return Make("integrity", Health::Abnormal,
              std::to_string(*mismatches) + " checksums did not match what was read");
}

// "/dev/dm-8 normal - online online 1024 262144": its device, mode, recovery, index, compression,
// blocks in use and blocks.
MappingStatus JudgeVdo(const std::string& parameters) {
  const std::vector<std::string_view> words = SplitList(parameters);
  if (words.size() < 2) return MakeNotUnderstood("vdo");
  if (words[1] == "read-only") return Make("vdo", Health::Danger, "it has become read-only");
  const auto used = words.size() < 7 ? std::nullopt : ToNumber(words[5]);
  const auto total = used ? ToNumber(words[6]) : std::nullopt;
  if (!total) return MakeNotUnderstood("vdo");
  if (*used >= *total) return Make("vdo", Health::Danger, "it is out of space");
  if (IsNearlyFull(static_cast<std::uint64_t>(*used), static_cast<std::uint64_t>(*total)))
    return Make("vdo", Health::Abnormal, "95 % or more of its space is in use");
  return Make("vdo", Health::Normal, "");
}

// "0 262144 262000 0": an error's number, blocks, free ones, those being written back.
MappingStatus JudgeWriteCache(const std::string& parameters) {
  const std::vector<std::string_view> words = SplitList(parameters);
  const auto error = words.size() < 4 ? std::nullopt : ToNumber(words[0]);
  if (!error) return MakeNotUnderstood("writecache");
  if (*error == 0) return Make("writecache", Health::Normal, "");
  return Make("writecache", Health::Danger, "what it holds could not be read or written");
}

}  // namespace linux_platform
