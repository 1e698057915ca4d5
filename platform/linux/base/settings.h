// Settings files: one key=value or key="value" a line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

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
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  // NUL-terminated, and valid while this object lives; null for an unknown key.
  const char* Value(std::string_view key) const;

 private:
  struct Entry {
    std::string_view key;
    const char* value;
  };
  std::string text_;  // holds every key and value, each value closed by a NUL in place
  std::vector<Entry> entries_;
};

constexpr std::size_t kSettingsCap = std::size_t{64} << 10;

enum class SettingsState { Read, Missing, Failed };

// Reads the settings file `path`, below the root, into `text`. Of a longer file the
// whole lines of its first 64 KiB count; that, like an unreadable file, is Failed, with
// the reason in words. When the factory defaults' file is missing, the built-in ones
// take its place, so that a machine without our package is no failure.
SettingsState ReadSettings(const char* path, std::string& text, std::string& reason);

// While it lives, ReadSettings in its thread gives what both files held at its beginning:
// one request reads each once, however many of its sources have settings.
class SharedSettings {
 public:
  SharedSettings();
  ~SharedSettings();
  SharedSettings(const SharedSettings&) = delete;
  SharedSettings& operator=(const SharedSettings&) = delete;

 private:
  friend SettingsState ReadSettings(const char* path, std::string& text, std::string& reason);
  struct File {
    const char* path;
    std::string text = {}, reason = {};
    SettingsState state = SettingsState::Missing;
  };
  File files_[2] = {{kCurrentSettings}, {kFactorySettings}};
};

}  // namespace linux_platform
