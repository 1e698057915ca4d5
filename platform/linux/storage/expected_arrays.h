// The arrays that mdadm.conf and fstab name, held against those that the kernel has.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/storage/md.h"

namespace linux_platform {

// One that ought to be there. "/dev/md/data" is an array's name, "/dev/md127" its number.
struct ExpectedArray {
  std::string device;  // as it stands there; "" when only the UUID does
  std::string uuid;    // hexadecimal digits, nothing between them; may be empty
  std::string name;    // "data" of "name=host:data"; may be empty
};

// The hexadecimal digits of a UUID: mdadm parts them by colons, udev by dashes.
std::string ToUuid(std::string_view text);
// What such an array is called as a part: "/dev/md/data", else its UUID.
std::string NameArray(const ExpectedArray& array);

// The ARRAY lines of a text in the format of mdadm.conf, but those to be ignored.
std::vector<ExpectedArray> ParseMdadmConf(const std::string& text);
// Those of /etc/mdadm/mdadm.conf below the root, parsed when it has changed, and of the files that
// lie in mdadm.conf.d; and which of them could not be read.
std::vector<ExpectedArray> ReadMdadmConf(std::vector<Trouble>& troubles);

// Whether it is this array, running or not: by number, by the link that bears its name, or by what
// its members and udev say of it.
bool IsArray(const ExpectedArray& expected, const MdArray& array);

}  // namespace linux_platform
