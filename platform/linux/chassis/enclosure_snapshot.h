// The machine's enclosures with fans or power supplies: the collector's snapshot "ses".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

struct EnclosurePart {
  // Absent: the place is empty, which is no fault. Gone: it was not always. Failing: it works, and
  // the enclosure predicts its end. Unknown: the enclosure does not say.
  enum class State { Ok, Failed, Absent, Failing, Gone, Unknown };

  std::string name;  // the enclosure's own, in printable ASCII; else "Fan 1", "Supply 1"
  State state = State::Unknown;
  int reading = 0;  // of a fan: turns a minute; 0: not told

  bool HasFailed() const { return state == State::Failed || state == State::Gone; }
};

struct Enclosure {
  std::string id;       // 16 hexadecimal digits
  std::string product;  // without the blanks around it, in printable ASCII
  std::string unread;   // why it did not answer, in words; then it has no parts
  std::vector<EnclosurePart> fans, supplies;

  // Of each list, as PluggedParts knows it.
  std::string NameFans() const { return id + " fans"; }
  std::string NameSupplies() const { return id + " supplies"; }

  Json::Value ToJson() const;
  // Members of the wrong type count as missing.
  static Enclosure FromJson(const Json::Value& entry);
};

struct EnclosureSnapshot {
  static constexpr const char* kSource = "ses";

  std::vector<Enclosure> enclosures;  // by identifier

  Json::Value ToJson() const;
  static EnclosureSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
