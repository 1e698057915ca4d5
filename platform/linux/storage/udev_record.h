// What udev found out about a block device when it came: its record, which everybody may read.
#pragma once

#include <string>
#include <string_view>

namespace linux_platform {

// The property of the device with that number, "8:17"; "" without one.
std::string ReadUdevProperty(const std::string& number, std::string_view key);
// The same of a device by its kernel name.
std::string ReadUdevPropertyOf(const std::string& device, std::string_view key);

// The whole record of such a device; "" without one.
std::string ReadUdevRecordOf(const std::string& device);

// The value of the property in a record's text.
std::string FindUdevProperty(std::string_view record, std::string_view key);

}  // namespace linux_platform
