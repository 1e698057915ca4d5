#include "platform/simulator/borrowed_json.h"

#include <cstring>

namespace vela::simulator {
namespace {

Json::Value BorrowedText(const Json::Value& source) {
  const char* begin = nullptr;
  const char* end = nullptr;
  source.getString(&begin, &end);
  if (std::memchr(begin, '\0', static_cast<std::size_t>(end - begin)) != nullptr) return source;
  return Json::StaticString(begin);
}

Json::Value BorrowedObject(const Json::Value& source) {
  Json::Value copy(Json::objectValue);
  for (auto member = source.begin(); member != source.end(); ++member) {
    const char* end = nullptr;
    const char* name = member.memberName(&end);
    if (std::strlen(name) == static_cast<std::size_t>(end - name))
      copy[Json::StaticString(name)] = Borrowed(*member);
    else
      copy[std::string(name, end)] = *member;
  }
  return copy;
}

}  // namespace

Json::Value Borrowed(const Json::Value& source) {
  if (source.isString()) return BorrowedText(source);
  if (source.isObject()) return BorrowedObject(source);
  if (!source.isArray()) return source;
  Json::Value copy(Json::arrayValue);
  for (const Json::Value& element : source) copy.append(Borrowed(element));
  return copy;
}

}  // namespace vela::simulator
