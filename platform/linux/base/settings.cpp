#include "platform/linux/base/settings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\f\v";
constexpr const char* kBuiltInDefaults = "supportsystempwarning=\"yes\"\n";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view Unquoted(std::string_view value) {
  if (value.empty() || (value.front() != '"' && value.front() != '\'')) return value;
  const std::size_t end = value.find(value.front(), 1);
  return end == std::string_view::npos ? value : value.substr(1, end - 1);
}

}  // namespace

Settings::Settings(std::string text) : text_(std::move(text)) {
  std::string_view rest = text_;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));

    if (line.starts_with('#')) continue;  // most lines of most files
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = Trimmed(line.substr(0, equals));
    if (key.empty() || key.front() == '#') continue;
    // An all-blank value is empty but must still point into the text.
    std::string_view value = Unquoted(Trimmed(line.substr(equals + 1)));
    if (value.data() == nullptr) value = line.substr(equals + 1, 0);
    // What follows a value, if only the text's own end, is never part of anything else.
    text_[static_cast<std::size_t>(value.data() - text_.data()) + value.size()] = '\0';
    entries_.push_back({key, value.data()});
  }
}

const char* Settings::Value(std::string_view key) const {
  const auto latest = std::find_if(entries_.rbegin(), entries_.rend(),
                                   [key](const Entry& entry) { return entry.key == key; });
  return latest == entries_.rend() ? nullptr : latest->value;
}

namespace {

thread_local constinit const SharedSettings* shared = nullptr;

SettingsState ReadAfresh(const char* path, std::string& text, std::string& reason) {
  switch (ReadSmallFile(BelowRoot(path).c_str(), kSettingsCap, text)) {
    case ReadResult::Read:
      return SettingsState::Read;
    case ReadResult::Missing:
      if (std::strcmp(path, kFactorySettings) == 0) text = kBuiltInDefaults;
      return SettingsState::Missing;
    case ReadResult::Failed:
      reason = std::string(path) + " could not be read: " + std::strerror(errno);
      return SettingsState::Failed;
    case ReadResult::TooLarge:
      break;
  }
  text.resize(text.rfind('\n') + 1);
  reason = std::string(path) + " is larger than 64 KiB; only its beginning was read";
  return SettingsState::Failed;
}

}  // namespace

SharedSettings::SharedSettings() {
  for (File& file : files_) file.state = ReadAfresh(file.path, file.text, file.reason);
  shared = this;
}

SharedSettings::~SharedSettings() {
  if (shared == this) shared = nullptr;
}

SettingsState ReadSettings(const char* path, std::string& text, std::string& reason) {
  if (shared != nullptr) {
    for (const SharedSettings::File& file : shared->files_) {
      if (std::strcmp(file.path, path) != 0) continue;
      text = file.text;
      if (file.state == SettingsState::Failed) reason = file.reason;
      return file.state;
    }
  }
  return ReadAfresh(path, text, reason);
}

}  // namespace linux_platform
