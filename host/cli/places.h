// Where the program's own files are, in the build tree and once installed.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

class Places {
 public:
  // From the running executable.
  Places();
  explicit Places(std::filesystem::path executableFolder);

  // The first place that holds `file`, else the place where it would be installed.
  std::filesystem::path FindLibrary(const std::string& file) const;
  // A name is first looked up among the shipped scenarios, so that a folder of the same name
  // in the current directory does not get in the way. Throws Failure(kNoInput), whose words
  // name up to three shipped ones that share words with it.
  std::string FindScenario(const std::string& nameOrPath) const;
  // Texts, page and scenarios.
  const std::filesystem::path& Data() const { return data_; }

 private:
  std::vector<std::filesystem::path> libraries_;
  std::filesystem::path data_;
};

}  // namespace host
