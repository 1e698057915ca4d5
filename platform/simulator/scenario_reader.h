// Reads JSON objects member by member, and says exactly which member is wrong.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/value.h>

namespace simulator {

// Its text begins with "<file>:<line>: ".
class ScenarioError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct ScenarioText {
  std::string file;
  std::string text;

  [[noreturn]] void Fail(std::ptrdiff_t offset, const std::string& message) const;
};

// One object of the scenario. Each Read takes the member `name` when it is there and
// leaves its target alone otherwise; Finish refuses members that nobody took.
class ObjectReader {
 public:
  ObjectReader(const ScenarioText& text, const Json::Value& object, std::string path);

  void Read(const char* name, bool& target);
  void Read(const char* name, int& target);
  void Read(const char* name, unsigned& target);
  void Read(const char* name, std::uint8_t& target);
  void Read(const char* name, std::int64_t& target);
  void Read(const char* name, std::uint64_t& target);
  void Read(const char* name, float& target);
  void Read(const char* name, std::string& target);
  void Read(const char* name, std::map<std::string, std::string, std::less<>>& target);

  // null in the scenario means none.
  template <typename Value>
  void Read(const char* name, std::optional<Value>& target) {
    const Json::Value* member = Take(name);
    if (member == nullptr) return;
    target.reset();
    if (!member->isNull()) Read(name, target.emplace());
  }

  // A list of objects; `readElement(ObjectReader&, Element&)` fills each from its defaults.
  template <typename Element, typename ReadElement>
  void Read(const char* name, std::vector<Element>& target, ReadElement readElement) {
    const Json::Value* member = TakeArray(name);
    if (member == nullptr) return;
    target.clear();
    for (const Json::Value& element : *member) {
      ObjectReader reader(text_, element, path_ + name + "[" + std::to_string(target.size()) + "]");
      readElement(reader, target.emplace_back());
      reader.Finish();
    }
  }

  // An object within the object.
  template <typename ReadMembers>
  void Read(const char* name, ReadMembers readMembers) {
    const Json::Value* member = Take(name);
    if (member == nullptr) return;
    ObjectReader reader(text_, *member, path_ + name);
    readMembers(reader);
    reader.Finish();
  }

  // Null when it is not there.
  const Json::Value* Take(const char* name);
  const Json::Value* TakeArray(const char* name);

  void Finish() const;
  [[noreturn]] void Fail(const Json::Value& member, const char* name,
                         const std::string& expected) const;
  // Names the line of the member; of one that is not there, the object's.
  [[noreturn]] void Fail(const char* name, const std::string& expected) const;

 private:
  template <typename Number>
  void ReadInteger(const char* name, Number& target);

  const ScenarioText& text_;
  const Json::Value& object_;
  std::string path_;  // "" or ends in "."
  std::set<std::string> known_;
};

}  // namespace simulator
