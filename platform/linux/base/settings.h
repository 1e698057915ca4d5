// Settings files: one key=value or key="value" a line.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/file_memo.h"

namespace linux_platform {

// The settings in force, and what the platform's own package ships as their defaults.
constexpr const char* kCurrentSettings = "/etc/velainfo.conf";
constexpr const char* kFactorySettings = "/etc.defaults/velainfo.conf";

// The settings that a text makes; the last line that sets a key wins. Blanks around key
// and value do not count, nor do carriage returns. Lines that begin with '#' are
// comments, as is what follows a quoted value. Quotes, single or double, come off in
// pairs; there are no escapes.
class Settings {
 public:
  Settings() = default;
  explicit Settings(std::string text);

  // NUL-terminated, and valid while this object stays where it is; null for an unknown key.
  const char* Text(std::string_view key) const;
  // Whether the value is "yes", "true" or "1"; anything else, like an unknown key, is no.
  bool Yes(std::string_view key) const;
  // The words of the value, parted as SplitList does; none for an unknown key.
  std::vector<std::string_view> List(std::string_view key) const;

  bool IsEmpty() const { return entries_.empty(); }

 private:
  struct Entry {
    std::size_t key, keySize, value;  // places in text_
  };
  std::string_view GetKey(const Entry& entry) const {
    return std::string_view(text_).substr(entry.key, entry.keySize);
  }

  std::string text_;            // holds every key and value, each value closed by a NUL in place
  std::vector<Entry> entries_;  // by key
};

// The words of `text`, which any number of commas, semicolons, blanks and tabs part.
std::vector<std::string_view> SplitList(std::string_view text);

constexpr std::size_t kSettingsCap = std::size_t{64} << 10;

enum class SettingsState { Read, Missing, Failed };

struct SettingsFile {
  SettingsState state = SettingsState::Missing;
  std::string reason;  // why Failed, in words
  Settings settings;
};

// The settings file `path`, below the root. Of a longer file the whole lines of its first
// 64 KiB count; that, like an unreadable file, is Failed. Where the factory defaults' file
// is missing, the built-in ones take its place, so that a machine without our package is no
// failure.
SettingsFile ReadSettings(const char* path);
// The same, and parsed anew only when the file has changed.
std::shared_ptr<const SettingsFile> RecallSettings(const char* path, FileMemo<SettingsFile>& memo);

}  // namespace linux_platform
