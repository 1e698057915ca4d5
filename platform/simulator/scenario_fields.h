// What a scenario file can hold: each member's name and the field that it stands for. Reading
// and writing walk the same lists, so neither knows a member that the other does not.
#pragma once

#include <type_traits>

#include "platform/simulator/machine.h"

namespace simulator {

template <typename Fields>
void Describe(Fields& fields, std::type_identity<NetworkInterface>) {
  fields("name", &NetworkInterface::name);
  fields("address", &NetworkInterface::address);
  fields("type", &NetworkInterface::type);
  fields("fails", &NetworkInterface::fails);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<Volume>) {
  fields("path", &Volume::path);
  fields("spaceId", &Volume::spaceId);
  fields("type", &Volume::type);
  fields("status", &Volume::status);
  fields("used", &Volume::used);
  fields("total", &Volume::total);
  fields("inodes", &Volume::inodes);
  fields("freeInodes", &Volume::freeInodes);
  fields("warningShare", &Volume::warningShare);
  fields("fails", &Volume::fails);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<ExternalVolume>) {
  fields("name", &ExternalVolume::name);
  fields("total", &ExternalVolume::total);
  fields("free", &ExternalVolume::free);
  fields("cardReader", &ExternalVolume::cardReader);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<PowerReport>) {
  fields("result", &PowerReport::result);
  fields("word", &PowerReport::word);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<ExpansionUnit>) {
  fields("name", &ExpansionUnit::name);
  fields("naming", &ExpansionUnit::naming);
  fields("slot", &ExpansionUnit::slot);
  fields("number", &ExpansionUnit::number);
  fields("power", &ExpansionUnit::power);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<StatedReason>) {
  fields("reason", &StatedReason::reason);
  fields("remedy", &StatedReason::remedy);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<StatedStatus>) {
  fields("state", &StatedStatus::state);
  fields("reason", &StatedStatus::reason);
  fields("remedy", &StatedStatus::remedy);
  fields("also", &StatedStatus::also);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<StatedNote>) {
  fields("key", &StatedNote::key);
  fields("part", &StatedNote::part);
  fields("figure", &StatedNote::figure);
  fields("mark", &StatedNote::mark);
  fields("command", &StatedNote::command);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<VELAPart>) {
  fields("kind", &VELAPart::kind);
  fields("state", &VELAPart::state);
  fields("name", &VELAPart::name);
  fields("device", &VELAPart::device);
  fields("path", &VELAPart::path);
  fields("parent", &VELAPart::parent);
  fields("bay", &VELAPart::bay);
  fields("slot", &VELAPart::slot);
  fields("port", &VELAPart::port);
  fields("mountPoint", &VELAPart::mountPoint);
  fields("model", &VELAPart::model);
  fields("serial", &VELAPart::serial);
  fields("size", &VELAPart::size);
  fields("used", &VELAPart::used);
  fields("total", &VELAPart::total);
  fields("reading", &VELAPart::reading);
  fields("mark", &VELAPart::mark);
  fields("unit", &VELAPart::unit);
  fields("runtime", &VELAPart::runtime);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<VELARelatedPart>) {
  fields("relation", &VELARelatedPart::relation);
  fields("part", &VELARelatedPart::part);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<VELAEvidence>) {
  fields("key", &VELAEvidence::key);
  fields("check", &VELAEvidence::check);
  fields("part", &VELAEvidence::part);
  fields("words", &VELAEvidence::words);
  fields("path", &VELAEvidence::path);
  fields("figure", &VELAEvidence::figure);
  fields("mark", &VELAEvidence::mark);
  fields("other", &VELAEvidence::other);
  fields("since", &VELAEvidence::since);
  fields("show", &VELAEvidence::show);
  fields("mend", &VELAEvidence::mend);
  fields("related", &VELAEvidence::related, &VELAEvidence::relatedCount);
  fields("moreRelated", &VELAEvidence::moreRelated);
}

template <typename Fields>
void DescribeHardware(Fields& hardware) {
  hardware("delay", &Machine::delay);
  hardware("fails", &Machine::hardwareFails);
  hardware("fanFailed", &Machine::fanFailed);
  hardware("cpuFanFailed", &Machine::cpuFanFailed);
  hardware("powerFailed", &Machine::powerFailed);
  hardware("powerDetail", &Machine::powerDetail);
  hardware("unitFansFailed", &Machine::unitFansFailed);
  hardware("unitFansDetail", &Machine::unitFansDetail);
  hardware("redundantPower", &Machine::redundantPower);
  hardware("temperatureResult", &Machine::temperatureResult);
  hardware("temperatureState", &Machine::temperatureState);
}

template <typename Fields>
void DescribeStorage(Fields& storage) {
  storage("overview", &Machine::overview);
  storage("maxDisks", &Machine::maxDisks);
  storage("volumes", &Machine::volumes);
  storage("disks", &Machine::disks);
  storage("disksFail", &Machine::disksFail);
  storage("systemVolumeCrashed", &Machine::systemVolumeCrashed);
}

template <typename Fields>
void DescribeConfiguration(Fields& configuration) {
  configuration("fails", &Machine::keyValueFails);
  configuration("null", &Machine::settingsNull);
  configuration("settings", &Machine::settings);
  configuration("defaults", &Machine::defaults);
}

template <typename Fields>
void DescribeUps(Fields& ups) {
  ups("fails", &Machine::upsFails);
  ups("enabled", &Machine::upsEnabled);
  ups("state", &Machine::upsState);
  ups("connected", &Machine::upsConnected);
}

// What the platform tells beside the answer.
template <typename Fields>
void DescribeTold(Fields& told) {
  told("sources", &Machine::sources);
  told("snapshotTime", &Machine::snapshotTime);
  told("notes", &Machine::notes);
  told("parts", &Machine::parts);
  told("evidence", &Machine::evidence);
}

template <typename Fields>
void Describe(Fields& fields, std::type_identity<Machine>) {
  fields("hostName", &Machine::hostName);
  fields("uptime", &Machine::uptime);
  fields.Group("error", [](auto& error) {
    error("code", &Machine::errorCode);
    error("file", &Machine::errorFile);
    error("line", &Machine::errorLine);
  });
  fields.Group("network", [](auto& network) {
    network("fails", &Machine::interfacesFail);
    network("interfaces", &Machine::interfaces);
  });
  fields.Group("configuration", [](auto& configuration) { DescribeConfiguration(configuration); });
  fields.Group("hardware", [](auto& hardware) { DescribeHardware(hardware); });
  fields.Group("webServer", [](auto& webServer) {
    webServer("defaultConfiguration", &Machine::httpDefaultConf);
    webServer("configurationApplies", &Machine::webServerApplies);
  });
  fields.Document("securityScan", &Machine::securityScan);
  fields.Group("ups", [](auto& ups) { DescribeUps(ups); });
  fields.Group("storage", [](auto& storage) { DescribeStorage(storage); });
  fields.Group("externalVolumes", [](auto& external) {
    external("usb", &Machine::usb);
    external("esata", &Machine::esata);
  });
  fields.Group("expansionUnits", [](auto& expansion) {
    expansion("fails", &Machine::unitsFail);
    expansion("units", &Machine::units);
  });
  fields.Group("highAvailability", [](auto& cluster) {
    cluster("running", &Machine::haRunning);
    cluster("status", &Machine::haStatus);
  });
  fields.Group("san", [](auto& san) {
    san("fails", &Machine::sanFails);
    san.Document("output", &Machine::sanOutput);
  });
  DescribeTold(fields);
}

}  // namespace simulator
