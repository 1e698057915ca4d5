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
  std::filesystem::path Library(const std::string& file) const;
  // Texts, page and scenarios.
  const std::filesystem::path& Data() const { return data_; }

 private:
  std::vector<std::filesystem::path> libraries_;
  std::filesystem::path data_;
};

}  // namespace host
