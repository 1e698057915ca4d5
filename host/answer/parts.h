// The parts that the names in an answer stand for, in the words of one language.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/texts.h"
#include "platform/status/parts.h"

namespace host {

// As the platform told them, in its order; a machine may have thousands.
class Parts {
 public:
  Parts() = default;
  Parts(std::vector<VELAPart> list);

  auto begin() const { return list_.begin(); }
  auto end() const { return list_.end(); }
  // Null when there is none; of several the first.
  const VELAPart* Find(std::string_view name) const { return Look(byName_, name); }
  const VELAPart* FindMounted(std::string_view path) const { return Look(byMountPoint_, path); }

 private:
  using Places = std::map<std::string, std::size_t, std::less<>>;  // in the list

  const VELAPart* Look(const Places& places, std::string_view key) const;

  std::vector<VELAPart> list_;
  Places byName_, byMountPoint_;
};

// Null when the platform told of no part of that name.
const VELAPart* FindPart(const Parts& parts, std::string_view name);

// The name as a person reads it: "Volume 1" for "volume_1", "UPS rack" for "rack".
std::string NamePart(const VELAPart& part, const Texts& texts);

// Where a person finds it: "bay 3", "/volume1"; empty where nobody knows.
std::string FormatPlace(const VELAPart& part, const Texts& texts);

// What a person needs to lay hands on it: "bay 3, WDC WD40EFRX, serial WD-1, was sdc". Of what is
// no disk, also what it is in: "RAID 5, Volume 1". Empty where nothing is known.
std::string FormatDetails(const VELAPart& part, const Parts& parts, const Texts& texts);

// "md0 (RAID 5, Volume 1)"; of what is no part its name.
std::string DescribePart(std::string_view name, const Parts& parts, const Texts& texts);

}  // namespace host
