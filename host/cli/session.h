// What every command starts from: the options that all of them share, and what they open.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/cli/places.h"
#include "host/loader/host.h"
#include "host/text/texts.h"

namespace host {

constexpr const char* kCompleteForm = "full";  // of --json

struct CommonOptions {
  std::string platform;  // "linux", "simulator" or the path of a library; empty: as fits
  std::string module;    // the path of the module; empty: the one beside this program
  std::string scenario;  // a name, or the path of a folder or file; empty: none
  std::string language;
  bool json = false;
  std::string jsonForm;  // "document", or kCompleteForm
};

class Session {
 public:
  explicit Session(CommonOptions options);

  const CommonOptions& Options() const { return options_; }
  const Places& GetPlaces() const { return places_; }
  const std::string& LanguageCode() const { return language_; }

  // From now on GetHost records: call it before anything else is opened.
  void Record() { recorded_ = true; }

  // Each opened when it is first needed; all throw Failure.
  const Host& GetHost();
  const Texts& GetTexts();
  // The machine of --scenario, else the platform's own (null).
  SimulatedMachine OpenMachine();
  SimulatedMachine OpenScenario(const std::string& nameOrPath);

 private:
  std::string FindPlatform() const;

  CommonOptions options_;
  Places places_;
  std::string language_;
  bool simulated_;
  bool recorded_ = false;
  std::optional<Host> host_;
  std::optional<Texts> texts_;
};

}  // namespace host
