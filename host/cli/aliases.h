// What stands in a captured machine for names and serial numbers that its owner may not want to
// pass on.
#pragma once

#include <map>
#include <string>

#include <json/value.h>

namespace host {

// Name -> alias. The same name has the same alias everywhere: "serial-1", "host-1", "UPS-1".
using Aliases = std::map<std::string, std::string>;

// Of a scenario's state.json: the host's name, those of nodes and UPS, and all serial numbers, also
// of disks that are told of but are no part, and those in paths of /dev/disk/by-id.
Aliases ChooseAliases(const Json::Value& state);

// Replaces the host's name, and within all that is told beside the answer each whole word that
// has an alias.
void ReplaceNames(Json::Value& machine, const Aliases& aliases);

}  // namespace host
