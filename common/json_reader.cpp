#include "common/json_reader.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <json/reader.h>
#include <boost/scope_exit.hpp>

#include "common/json_marks.h"
#include "common/json_numbers.h"
#include "common/number.h"

namespace common {
namespace {

constexpr std::size_t kLargestFile = 16U << 20U;

// Reads up to `size` bytes into `text` and returns how many there were; -1 on an error.
ssize_t ReadFile(int file, char* text, std::size_t size) {
  std::size_t length = 0;
  while (length < size) {
    const ssize_t count = pread(file, text + length, size - length, static_cast<off_t>(length));
    if (count < 0) return -1;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(length);
}

bool Parse(std::string_view text, Json::Value& value) {
  errno = 0;
  // Given two pointers, the reader keeps no copy of the text. Told to keep comments, it would look
  // at the text behind a value once for each of them.
  if (Json::Reader().parse(text.data(), text.data() + text.size(), value, false)) return true;
  // That stream swallows exhausted memory, and reports bad syntax.
  if (errno == ENOMEM) throw std::bad_alloc();
  return false;
}

}  // namespace

const Json::Value* FindMember(const Json::Value& value, const char* name) {
  return value.isObject() ? value.find(name, name + std::strlen(name)) : nullptr;
}

std::string_view MemberName(const Json::ValueConstIterator& member) {
  const char* end = nullptr;
  const char* name = member.memberName(&end);
  return {name, static_cast<std::size_t>(end - name)};
}

std::string_view ViewText(const Json::Value& value) {
  const char* begin = nullptr;
  const char* end = nullptr;
  value.getString(&begin, &end);
  return {begin, static_cast<std::size_t>(end - begin)};
}

std::string TextMember(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return std::string(member != nullptr ? ViewText(*member) : "");
}

std::uint64_t SizeMember(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  if (member == nullptr) return 0;
  if (member->isUInt64()) return member->asUInt64();
  if (member->type() != Json::realValue) return 0;
  return ToSize(member->asDouble()).value_or(0);
}

Parsed TryParseJson(std::string_view text, Json::Value& value, std::size_t mostValues) {
  const JsonShape shape = MeasureJson(text);
  if (shape.depth > kDeepestJson) return Parsed::Invalid;
  if (shape.values > mostValues) return Parsed::TooLarge;
  try {
    Json::Value parsed;
    const bool valid =
        LocaleReadsFractions() ? Parse(text, parsed) : Parse(WithoutDecimalPoints(text), parsed);
    if (!valid) return Parsed::Invalid;
    value.swap(parsed);
    return Parsed::Whole;
  } catch (const Json::RuntimeError&) {  // of a failed malloc
    throw std::bad_alloc();
  }
}

bool ParseJson(std::string_view text, Json::Value& value) {
  return TryParseJson(text, value) == Parsed::Whole;
}

bool ReadJsonFile(const char* path, Json::Value& value) {
  // Not blocking, so that a pipe in the file's place cannot hold the request up.
  const int file = openat(AT_FDCWD, path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (file < 0) return false;
  BOOST_SCOPE_EXIT_ALL(file) { close(file); };

  struct stat status = {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > kLargestFile) return false;
  std::array<char, 1024> brief;  // most such files are small
  std::string longer(size > brief.size() ? size : 0, '\0');
  char* text = longer.empty() ? brief.data() : longer.data();
  const ssize_t length = ReadFile(file, text, size);
  return length >= 0 && ParseJson({text, static_cast<std::size_t>(length)}, value);
}

}  // namespace common
