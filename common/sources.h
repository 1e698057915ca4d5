// The sources of what the module asks: platforms report on them, findings rest on them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string_view>

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

// One letter of a name as a settings file has it: small, and "-" for a blank.
constexpr char ToSettingsLetter(char letter) {
  if (letter == ' ') return '-';
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// "external-volumes", "ups" or "UPS"; none for a word that names no source.
constexpr std::optional<Source> FindSource(std::string_view word) {
  for (std::size_t i = 0; i < kSourceNames.size(); ++i)
    if (std::ranges::equal(word, std::string_view(kSourceNames[i]), {}, ToSettingsLetter,
                           ToSettingsLetter))
      return static_cast<Source>(i);
  return std::nullopt;
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
