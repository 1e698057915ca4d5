#include "platform/simulator/borrowed_json.h"

#include <string_view>

namespace simulator {
namespace {

bool HoldsNul(std::string_view text) { return text.find('\0') != text.npos; }

Json::StaticString Intern(std::string_view text, Texts& texts) {
  const auto place = texts.find(text);
  return Json::StaticString((place != texts.end() ? place : texts.emplace(text).first)->c_str());
}

Json::Value BorrowText(const Json::Value& source, Texts& texts) {
  const char* begin = nullptr;
  const char* end = nullptr;
  source.getString(&begin, &end);
  if (HoldsNul({begin, end})) return source;
  return Intern({begin, end}, texts);
}

Json::Value BorrowObject(const Json::Value& source, Texts& texts) {
  Json::Value copy(Json::objectValue);
  for (auto member = source.begin(); member != source.end(); ++member) {
    const char* end = nullptr;
    const char* begin = member.memberName(&end);
    const std::string_view name(begin, end);
    if (HoldsNul(name))
      copy[std::string(name)] = Borrow(*member, texts);
    else
      copy[Intern(name, texts)] = Borrow(*member, texts);
  }
  return copy;
}

}  // namespace

Json::Value Borrow(const Json::Value& source, Texts& texts) {
  if (source.isString()) return BorrowText(source, texts);
  if (source.isObject()) return BorrowObject(source, texts);
  if (!source.isArray()) return source;
  Json::Value copy(Json::arrayValue);
  for (const Json::Value& element : source) copy.append(Borrow(element, texts));
  return copy;
}

}  // namespace simulator
