// The sizes of file systems that are programs: the collector's snapshot "fuseblk".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

struct ProgramMount {
  std::string path;                   // "/media/stick"
  std::string device;                 // "8:17"
  std::uint64_t total = 0, free = 0;  // bytes; free: what a user can still write

  Json::Value ToJson() const;
  static ProgramMount FromJson(const Json::Value& entry);
};

struct ProgramMountSnapshot {
  static constexpr const char* kSource = "fuseblk";

  std::vector<ProgramMount> mounts;  // those that answered
  std::string trouble;               // who did not and why, in words

  const ProgramMount* FindMount(const std::string& path) const;  // null: it did not answer

  Json::Value ToJson() const;
  static ProgramMountSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
