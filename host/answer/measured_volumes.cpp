#include "host/answer/measured_volumes.h"

#include "common/json_reader.h"

namespace host {
namespace {

using common::FindMember, common::TextMember;

const Json::Value& GetList(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* list = FindMember(value, name);
  return list != nullptr && list->isArray() ? *list : kNone;
}

double GetNumber(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isNumeric() ? member->asDouble() : 0;
}

// `prefix` makes the volume's name in the document of what the check calls it.
void AddVolumes(const CheckerResult& check, const char* prefix,
                std::vector<MeasuredVolume>& volumes) {
  for (const Json::Value& volume : GetList(check.saw, "volumes"))
    for (const Json::Value& compared : GetList(volume, "compared"))
      if (TextMember(compared, "unit") == "bytes")
        volumes.push_back({prefix + TextMember(volume, "volume"), GetNumber(compared, "total"),
                           GetNumber(compared, "free"), GetNumber(compared, "mark")});
}

}  // namespace

std::vector<MeasuredVolume> ListMeasuredVolumes(const Explanation& explanation) {
  std::vector<MeasuredVolume> volumes;
  for (const CheckerResult& check : explanation.checkers) {
    if (check.name == "volume usage") AddVolumes(check, "volume_", volumes);
    if (check.name == "external volumes") AddVolumes(check, "", volumes);
  }
  return volumes;
}

}  // namespace host
