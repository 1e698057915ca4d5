#include "platform/linux/base/settings.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\f\v";
constexpr std::string_view kListSeparators = ",; \t";
constexpr std::array<std::string_view, 3> kYes = {"yes", "true", "1"};
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

SettingsFile ToSettingsFile(const char* path, ReadResult result, std::string text) {
  switch (result) {
    case ReadResult::Read:
      return {SettingsState::Read, {}, Settings(std::move(text))};
    case ReadResult::Missing:
      if (std::strcmp(path, kFactorySettings) != 0) return {};
      return {SettingsState::Read, {}, Settings(kBuiltInDefaults)};
    case ReadResult::Failed:
      return {SettingsState::Failed,
              std::string(path) + " could not be read: " + std::strerror(errno), Settings()};
    case ReadResult::TooLarge:
      break;
  }
  text.resize(text.rfind('\n') + 1);
  return {SettingsState::Failed,
          std::string(path) + " is larger than 64 KiB; only its beginning was read",
          Settings(std::move(text))};
}

}  // namespace

Settings::Settings(std::string text) : text_(std::move(text)) {
  const auto placeOf = [this](std::string_view part) {
    return static_cast<std::size_t>(part.data() - text_.data());
  };
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
    text_[placeOf(value) + value.size()] = '\0';
    entries_.push_back({placeOf(key), key.size(), placeOf(value)});
  }
  // Of the same key the last line stays last.
  std::ranges::stable_sort(entries_, {}, [this](const Entry& entry) { return GetKey(entry); });
}

const char* Settings::Text(std::string_view key) const {
  const auto behind = std::ranges::upper_bound(
      entries_, key, {}, [this](const Entry& entry) { return GetKey(entry); });
  if (behind == entries_.begin() || GetKey(behind[-1]) != key) return nullptr;
  return text_.c_str() + behind[-1].value;
}

bool Settings::Yes(std::string_view key) const {
  const char* value = Text(key);
  return value != nullptr && std::ranges::find(kYes, value) != kYes.end();
}

std::vector<std::string_view> Settings::List(std::string_view key) const {
  const char* value = Text(key);
  return SplitList(value != nullptr ? value : "");
}

std::vector<std::string_view> SplitList(std::string_view text) {
  std::vector<std::string_view> words;
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(kListSeparators), text.size()));
    if (text.empty()) return words;
    words.push_back(text.substr(0, text.find_first_of(kListSeparators)));
    text.remove_prefix(words.back().size());
  }
}

SettingsFile ReadSettings(const char* path) {
  std::string text;
  const ReadResult result = ReadSmallFile(BelowRoot(path).c_str(), kSettingsCap, text);
  return ToSettingsFile(path, result, std::move(text));
}

std::shared_ptr<const SettingsFile> RecallSettings(const char* path, FileMemo<SettingsFile>& memo) {
  return memo.Of(BelowRoot(path), kSettingsCap, [path](ReadResult result, std::string text) {
    return ToSettingsFile(path, result, std::move(text));
  });
}

}  // namespace linux_platform
