#include "platform/simulator/scenario.h"

#include <fstream>
#include <memory>
#include <regex>
#include <sstream>

#include <json/reader.h>
#include <json/writer.h>

namespace vela::simulator {
namespace {

void ReadInterface(ObjectReader& reader, NetworkInterface& interface) {
  reader.Read("name", interface.name);
  reader.Read("address", interface.address);
  reader.Read("type", interface.type);
  reader.Read("fails", interface.fails);
}

void ReadVolume(ObjectReader& reader, Volume& volume) {
  reader.Read("path", volume.path);
  reader.Read("spaceId", volume.spaceId);
  reader.Read("type", volume.type);
  reader.Read("status", volume.status);
  reader.Read("used", volume.used);
  reader.Read("total", volume.total);
  reader.Read("inodes", volume.inodes);
  reader.Read("freeInodes", volume.freeInodes);
  reader.Read("warningShare", volume.warningShare);
  reader.Read("fails", volume.fails);
}

void ReadExternalVolume(ObjectReader& reader, ExternalVolume& volume) {
  reader.Read("name", volume.name);
  reader.Read("total", volume.total);
  reader.Read("free", volume.free);
  reader.Read("cardReader", volume.cardReader);
}

void ReadUnit(ObjectReader& reader, ExpansionUnit& unit) {
  reader.Read("name", unit.name);
  reader.Read("naming", unit.naming);
  reader.Read("slot", unit.slot);
  reader.Read("number", unit.number);
  const Json::Value* power = reader.Take("power");
  if (power != nullptr && power->isNull()) {
    unit.power.reset();
    return;
  }
  reader.Read("power", [&unit](ObjectReader& members) {
    members.Read("result", unit.power->result);
    members.Read("word", unit.power->word);
  });
}

// A program's output or a file's bytes: any JSON value stands for its own text, the
// member's name with "Text" behind it gives the bytes as they are; null means none.
template <typename Document>
void ReadDocument(ObjectReader& reader, const std::string& name, Document& target) {
  std::optional<std::string> bytes;
  if (const Json::Value* document = reader.Take(name.c_str())) {
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    if (!document->isNull()) bytes = Json::writeString(compact, *document);
    target = bytes;
  }
  if (reader.Take((name + "Text").c_str()) == nullptr) return;
  reader.Read((name + "Text").c_str(), bytes);
  target = bytes;
}

void ReadHardware(ObjectReader& reader, Machine& machine) {
  reader.Read("fails", machine.hardwareFails);
  reader.Read("fanFailed", machine.fanFailed);
  reader.Read("cpuFanFailed", machine.cpuFanFailed);
  reader.Read("powerFailed", machine.powerFailed);
  reader.Read("powerDetail", machine.powerDetail);
  reader.Read("unitFansFailed", machine.unitFansFailed);
  reader.Read("unitFansDetail", machine.unitFansDetail);
  reader.Read("redundantPower", machine.redundantPower);
  reader.Read("temperatureResult", machine.temperatureResult);
  reader.Read("temperatureState", machine.temperatureState);
}

void ReadStorage(ObjectReader& reader, Machine& machine) {
  reader.Read("overview", machine.overview);
  reader.Read("maxDisks", machine.maxDisks);
  reader.Read("volumes", machine.volumes, ReadVolume);
  if (const Json::Value* disks = reader.TakeArray("disks")) {
    machine.disks.Clear();
    for (const Json::Value& disk : *disks) machine.disks.Append(disk);
  }
  reader.Read("disksFail", machine.disksFail);
  reader.Read("systemVolumeCrashed", machine.systemVolumeCrashed);
}

void ReadMachine(ObjectReader& reader, Machine& machine) {
  std::string why;  // for people only
  reader.Read("why", why);
  reader.Read("hostName", machine.hostName);
  reader.Read("uptime", machine.uptime);
  reader.Read("error", [&machine](ObjectReader& error) {
    error.Read("code", machine.errorCode);
    error.Read("file", machine.errorFile);
    error.Read("line", machine.errorLine);
  });
  reader.Read("network", [&machine](ObjectReader& network) {
    network.Read("fails", machine.interfacesFail);
    network.Read("interfaces", machine.interfaces, ReadInterface);
  });
  reader.Read("configuration", [&machine](ObjectReader& configuration) {
    configuration.Read("fails", machine.keyValueFails);
    configuration.Read("settings", machine.settings);
    configuration.Read("defaults", machine.defaults);
  });
  reader.Read("hardware", [&machine](ObjectReader& hardware) { ReadHardware(hardware, machine); });
  reader.Read("webServer", [&machine](ObjectReader& webServer) {
    webServer.Read("defaultConfiguration", machine.httpDefaultConf);
    webServer.Read("configurationApplies", machine.webServerApplies);
  });
  ReadDocument(reader, "securityScan", machine.securityScan);
  reader.Read("ups", [&machine](ObjectReader& ups) {
    ups.Read("fails", machine.upsFails);
    ups.Read("enabled", machine.upsEnabled);
    ups.Read("state", machine.upsState);
    ups.Read("connected", machine.upsConnected);
  });
  reader.Read("storage", [&machine](ObjectReader& storage) { ReadStorage(storage, machine); });
  reader.Read("externalVolumes", [&machine](ObjectReader& external) {
    external.Read("usb", machine.usb, ReadExternalVolume);
    external.Read("esata", machine.esata, ReadExternalVolume);
  });
  reader.Read("expansionUnits", [&machine](ObjectReader& expansion) {
    expansion.Read("fails", machine.unitsFail);
    expansion.Read("units", machine.units, ReadUnit);
  });
  reader.Read("highAvailability", [&machine](ObjectReader& cluster) {
    cluster.Read("running", machine.haRunning);
    cluster.Read("status", machine.haStatus);
  });
  reader.Read("san", [&machine](ObjectReader& san) {
    san.Read("fails", machine.sanFails);
    ReadDocument(san, "output", machine.sanOutput);
  });
}

Json::Value Parse(const ScenarioText& scenario) {
  Json::CharReaderBuilder strict;
  Json::CharReaderBuilder::strictMode(&strict.settings_);
  strict["allowComments"] = true;
  const std::unique_ptr<Json::CharReader> reader(strict.newCharReader());
  const char* begin = scenario.text.data();
  Json::Value root;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(begin, begin + scenario.text.size(), &root, &errors);
  } catch (const Json::Exception& error) {
    errors = error.what();
  }
  if (parsed) return root;

  // The library's report: "* Line 3, Column 5\n  What is wrong\n...".
  std::smatch match;
  if (std::regex_search(errors, match, std::regex("Line (\\d+), Column \\d+\\s+([^\\n]+)")))
    throw ScenarioError(scenario.file + ":" + match.str(1) + ": not JSON: " + match.str(2));
  throw ScenarioError(scenario.file + ":1: not JSON: " + errors);
}

}  // namespace

Machine ParseScenario(const std::string& file, const std::string& text) {
  const ScenarioText scenario{file, text};
  const Json::Value root = Parse(scenario);
  Machine machine;
  ObjectReader reader(scenario, root, "");
  ReadMachine(reader, machine);
  reader.Finish();
  return machine;
}

Machine LoadScenario(const std::filesystem::path& path) {
  const auto file = std::filesystem::is_directory(path) ? path / "state.json" : path;
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  if (!stream || !(text << stream.rdbuf()))
    throw ScenarioError(file.string() + ":0: cannot read the scenario: no such file, or empty");
  return ParseScenario(file.string(), text.str());
}

}  // namespace vela::simulator
