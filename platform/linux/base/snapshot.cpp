#include "platform/linux/base/snapshot.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "common/json_reader.h"
#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

using common::FindMember, common::ParseJson, common::TextMember;

constexpr std::time_t kLongestPeriod = 86400;
constexpr std::size_t kLongestError = 160;

SnapshotState Failed(std::string_view source, std::string_view what, std::string& reason) {
  reason.assign(source).append(".json ").append(what);
  return SnapshotState::Failed;
}

SnapshotState Old(std::string_view source, std::time_t age, std::string& reason) {
  reason.assign(source).append(".json is ").append(std::to_string(age));
  reason.append(" s old: vela-platform-collect is stuck or off");
  return SnapshotState::Old;
}

// A member as seconds; -1 unless it is a plausible count of them.
std::time_t SecondsMember(const Json::Value& document, const char* name) {
  const Json::Value* member = FindMember(document, name);
  return member != nullptr && member->isInt64() ? member->asInt64() : -1;
}

SnapshotState JudgeAge(std::string_view source, const Json::Value& document, std::time_t now,
                       std::string& reason) {
  const std::time_t written = SecondsMember(document, kWritten);
  const std::time_t period = SecondsMember(document, kPeriod);
  if (written < 0 || period <= 0 || period > kLongestPeriod)
    return Failed(source, "does not say when it was written", reason);
  const std::time_t lasts = period * kSnapshotPeriods;
  if (written > now && written - now > lasts)
    return Failed(source, "is from the future: was the clock set back?", reason);
  if (now > written && now - written > lasts) return Old(source, now - written, reason);
  return SnapshotState::Read;
}

}  // namespace

SnapshotState ParseSnapshot(std::string_view source, std::string_view text, std::time_t now,
                            std::string_view bootId, Json::Value& document, std::string& reason) {
  Json::Value parsed;
  if (!ParseJson(text, parsed) || !parsed.isObject())
    return Failed(source, "is not a JSON object", reason);
  if (bootId.empty() || TextMember(parsed, kBootId) != bootId) return SnapshotState::Absent;
  const SnapshotState age = JudgeAge(source, parsed, now, reason);
  if (age != SnapshotState::Read) return age;
  if (FindMember(parsed, kError) != nullptr) {
    const std::string error = TextMember(parsed, kError).substr(0, kLongestError);
    reason = std::string(source) + ": " + (error.empty() ? "could not be read" : error);
    return SnapshotState::Failed;
  }
  document.swap(parsed);
  return SnapshotState::Read;
}

namespace {

// It stays for as long as this process lives; only a test changes the root.
const std::string& ThisBoot() {
  thread_local std::string root, id;
  if (std::string path = BelowRoot("/"); id.empty() || path != root) {
    root = std::move(path);
    id = BootId();
  }
  return id;
}

}  // namespace

SnapshotState ReadSnapshot(const char* source, Json::Value& document, std::string& reason) {
  const std::string path = BelowRoot(kSnapshotFolder, "/", source, ".json");
  std::string text;
  switch (ReadSmallFile(path.c_str(), kSnapshotCap, text)) {
    case ReadResult::Missing:
      return SnapshotState::Absent;
    case ReadResult::Failed:
      return Failed(source, std::string("could not be read: ") + std::strerror(errno), reason);
    case ReadResult::TooLarge:
      return Failed(source, "is larger than 1 MiB", reason);
    case ReadResult::Read:
      break;
  }
  return ParseSnapshot(source, text, std::time(nullptr), ThisBoot(), document, reason);
}

std::int64_t FindSnapshotTime() {
  std::time_t youngest = -1;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(BelowRoot(kSnapshotFolder), error)) {
    Json::Value document;
    std::string text;
    if (entry.path().extension() == ".json" &&
        ReadSmallFile(entry.path().c_str(), kSnapshotCap, text) == ReadResult::Read &&
        ParseJson(text, document) && TextMember(document, kBootId) == ThisBoot())
      youngest = std::max(youngest, SecondsMember(document, kWritten));
  }
  return youngest;
}

Trouble ToTrouble(SnapshotState state, std::string reason) {
  if (state == SnapshotState::Old) return {std::move(reason), kStartCollector};
  return state == SnapshotState::Failed ? Trouble(std::move(reason)) : Trouble();
}

Trouble MissCollector(const std::string& what) {
  return {what + ", and vela-platform-collect, which does so in our place, does not run",
          kStartCollector};
}

Json::Value ReadMemory(const char* source) {
  std::string text;
  Json::Value document;
  const std::string path = BelowRoot(kMemoryFolder, "/", source, ".json");
  if (ReadSmallFile(path.c_str(), kSnapshotCap, text) != ReadResult::Read ||
      !ParseJson(text, document) || !document.isObject())
    return {};
  return document;
}

std::string SeenByCollector(const Json::Value& document) {
  const std::time_t age = std::time(nullptr) - SecondsMember(document, kWritten);
  return "seen by vela-platform-collect " + std::to_string(std::max<std::time_t>(age, 0)) +
         " s ago";
}

std::int64_t NumberMember(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isInt64() ? member->asInt64() : 0;
}

const Json::Value& ListMember(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isArray() ? *member : kNone;
}

std::string BootId() {
  std::string text;
  ReadSmallFile(BelowRoot("/proc/sys/kernel/random/boot_id").c_str(), 64, text);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace linux_platform
