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

#include "common/json_numbers.h"
#include "common/number.h"

namespace common {
namespace {

constexpr std::size_t kLargestFile = 16U << 20U;

// The parser reports a document that is nested too deep by an exception, and a
// failed malloc by one of the same type.
bool IsTooDeep(const Json::RuntimeError& error) {
  return std::string_view(error.what()).find("stackLimit") != std::string_view::npos;
}

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

bool Parse(std::string_view text, Json::Value& value, Comments comments) {
  errno = 0;
  // Given two pointers, the reader keeps no copy of the text.
  if (Json::Reader().parse(text.data(), text.data() + text.size(), value,
                           comments == Comments::Collect))
    return true;
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

bool ParseJson(std::string_view text, Json::Value& value, Comments comments) {
  try {
    Json::Value parsed;
    const bool valid = LocaleReadsFractions() ? Parse(text, parsed, comments)
                                              : Parse(WithoutDecimalPoints(text), parsed, comments);
    if (!valid) return false;
    value.swap(parsed);
    return true;
  } catch (const Json::RuntimeError& error) {
    if (IsTooDeep(error)) return false;
    throw std::bad_alloc();
  }
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
