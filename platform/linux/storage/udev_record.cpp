#include "platform/linux/storage/udev_record.h"

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

std::string ReadRecord(const std::string& number) {
  std::string record;
  ReadSmallFile(BelowRoot("/run/udev/data/b", number).c_str(), std::size_t{64} << 10, record);
  return record;
}

}  // namespace

std::string ReadUdevProperty(const std::string& number, std::string_view key) {
  return FindUdevProperty(ReadRecord(number), key);
}

std::string ReadUdevRecordOf(const std::string& device) {
  return ReadRecord(Attribute(Sys("/class/block/", device, "/dev")));
}

std::string ReadUdevPropertyOf(const std::string& device, std::string_view key) {
  return FindUdevProperty(ReadUdevRecordOf(device), key);
}

std::string FindUdevProperty(std::string_view record, std::string_view key) {
  const std::string line = Concatenate("E:", key, "=");
  for (std::size_t at = 0; (at = record.find(line, at)) != record.npos; at += line.size()) {
    if (at > 0 && record[at - 1] != '\n') continue;
    const std::string_view rest = record.substr(at + line.size());
    return std::string(rest.substr(0, rest.find('\n')));
  }
  return {};
}

}  // namespace linux_platform
