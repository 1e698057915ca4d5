#include "platform/linux/san/target.h"

#include <algorithm>
#include <map>

#include "common/json_reader.h"
#include "platform/linux/base/open.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

using common::FindMember, common::ParseJson, common::TextMember;

std::string GetConfigPath(const std::string& path) { return Sys("/kernel/config/target/") + path; }

Lun ReadLun(const std::string& object) {
  Lun lun;
  lun.name = LastComponent(object);
  lun.object = object.substr(GetConfigPath("core/").size());
  lun.backing = Attribute(object + "/udev_path");
  const std::string info = Attribute(object + "/info");
  if (lun.backing.empty()) lun.backing = ParseBackingPath(info);
  lun.size = ParseSize(info);
  lun.isEnabled = Attribute(object + "/enable") != "0" &&
                  Attribute(object + "/statistics/scsi_lu/status") != "notavailable";
  return lun;
}

// The object's folder that a link in a LUN's folder leads to; "" when it is no such link.
std::string ReadLinkedObject(const std::string& link) {
  constexpr std::string_view kCore = "/core/";
  const std::string leads = ReadLink(link);
  const std::size_t core = leads.rfind(kCore);
  if (core == std::string::npos) return {};
  return GetConfigPath("core/" + leads.substr(core + kCore.size()));
}

// A LUN's folder holds attributes, and one link to its storage object.
void AddLuns(const std::string& portalGroup, std::map<std::string, Lun>& byObject) {
  const std::string luns = portalGroup + "/lun";
  for (const std::string& lun : NamesIn(luns))
    for (const std::string& entry : NamesIn(Within(luns, lun))) {
      const std::string object = ReadLinkedObject(Within(Within(luns, lun), entry));
      if (!object.empty() && !byObject.contains(object)) byObject[object] = ReadLun(object);
    }
}

const Json::Value& GetList(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isArray() ? *member : kNone;
}

bool IsTrue(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isBool() && member->asBool();
}

// "fileio/lun1" of "/backstores/fileio/lun1"
std::string WithoutBackstores(const std::string& object) {
  constexpr std::string_view kBackstores = "/backstores/";
  return object.starts_with(kBackstores) ? object.substr(kBackstores.size()) : object;
}

void AddSavedLuns(const Json::Value& target, const std::map<std::string, std::string>& backings,
                  std::map<std::string, Lun>& byObject) {
  if (TextMember(target, "fabric") != "iscsi") return;
  for (const Json::Value& group : GetList(target, "tpgs")) {
    if (!IsTrue(group, "enable")) continue;
    for (const Json::Value& lun : GetList(group, "luns")) {
      const std::string object = TextMember(lun, "storage_object");
      if (object.empty()) continue;
      const auto backing = backings.find(object);
      byObject[object] = {std::string(LastComponent(object)), WithoutBackstores(object),
                          backing != backings.end() ? backing->second : "", true, 0};
    }
  }
}

std::vector<Lun> SortByName(std::map<std::string, Lun>&& byObject) {
  std::vector<Lun> luns;
  for (auto& [object, lun] : byObject) luns.push_back(std::move(lun));
  std::ranges::stable_sort(luns, {}, &Lun::name);
  return luns;
}

}  // namespace

Target ReadTarget() {
  Target target;
  std::map<std::string, Lun> byObject;
  const std::string iscsi = GetConfigPath("iscsi");
  for (const std::string& name : NamesIn(iscsi))
    for (const std::string& group : NamesIn(Within(iscsi, name))) {
      const std::string folder = Within(Within(iscsi, name), group);
      if (!group.starts_with("tpgt_") || Attribute(folder + "/enable") != "1") continue;
      target.isServing = true;
      AddLuns(folder, byObject);
    }
  target.luns = SortByName(std::move(byObject));
  for (const std::string& adapter : NamesIn(GetConfigPath("core")))
    for (std::string& object : NamesIn(GetConfigPath("core/") + adapter))
      target.names.push_back(std::move(object));
  std::ranges::sort(target.names);
  return target;
}

bool ParseSavedLuns(std::string_view text, std::vector<Lun>& luns) {
  Json::Value saved;
  if (!ParseJson(text, saved) || !saved.isObject()) return false;
  std::map<std::string, std::string> backings;
  for (const Json::Value& object : GetList(saved, "storage_objects"))
    backings["/backstores/" + TextMember(object, "plugin") + "/" + TextMember(object, "name")] =
        TextMember(object, "dev");
  std::map<std::string, Lun> byObject;
  for (const Json::Value& target : GetList(saved, "targets"))
    AddSavedLuns(target, backings, byObject);
  luns = SortByName(std::move(byObject));
  return true;
}

std::string ParseBackingPath(std::string_view info) {
  constexpr std::string_view kBefore = "File: ", kAfter = " Size: ";
  const std::size_t begin = info.find(kBefore), end = info.rfind(kAfter);
  if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) return {};
  const std::string_view path = info.substr(begin + kBefore.size(), end - begin - kBefore.size());
  return std::string(path.substr(0, path.find_last_not_of(' ') + 1));
}

std::int64_t ParseSize(std::string_view info) {
  constexpr std::string_view kBefore = " Size: ";
  const std::size_t begin = info.rfind(kBefore);
  if (begin == info.npos) return 0;
  const std::string_view rest = info.substr(begin + kBefore.size());
  return ToNumber(rest.substr(0, rest.find_first_not_of("0123456789"))).value_or(0);
}

}  // namespace linux_platform
