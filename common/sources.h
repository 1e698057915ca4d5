// The sources of what the module asks: platforms report on them, findings rest on them.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>

namespace common {

// The numeric order is the order of the platforms' reports.
enum class Source {
  Network,
  Configuration,
  Hardware,
  WebServer,
  Ups,
  Volumes,
  Disks,
  ExternalVolumes,
  ExpansionUnits,
  HighAvailability,
  San,
  Smart,  // who watches the disks' own health values
};

inline constexpr std::array kSourceNames = {
    "network", "configuration",    "hardware",        "web server",        "UPS", "volumes",
    "disks",   "external volumes", "expansion units", "high availability", "SAN", "SMART",
};
static_assert(kSourceNames.size() == static_cast<std::size_t>(Source::Smart) + 1);

constexpr const char* SourceName(Source source) {
  return kSourceNames[static_cast<std::size_t>(source)];
}

class SourceSet {
 public:
  constexpr SourceSet() = default;
  constexpr SourceSet(std::initializer_list<Source> sources) {
    for (const Source source : sources) Add(source);
  }
  constexpr void Add(Source source) { bits_ |= Bit(source); }
  constexpr bool IsEmpty() const { return bits_ == 0; }
  constexpr SourceSet And(SourceSet other) const {
    other.bits_ &= bits_;
    return other;
  }
  constexpr bool Contains(Source source) const { return (bits_ & Bit(source)) != 0; }

 private:
  static constexpr unsigned Bit(Source source) { return 1U << static_cast<unsigned>(source); }

  unsigned bits_ = 0;
};

}  // namespace common
