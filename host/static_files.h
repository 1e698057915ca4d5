// The page's own files, read once at the start: no request ever reaches the file system.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace vela::host {

struct StaticFile {
  const char* contentType;
  std::string bytes;
};

class StaticFiles {
 public:
  // The page in `data`/www and the texts in `data`/texts. Throws Failure when one is missing.
  explicit StaticFiles(const std::filesystem::path& data);

  // By path: "/", "/widget.js", "/texts/de.json"; null when there is none.
  const StaticFile* Find(std::string_view path) const;

 private:
  std::map<std::string, StaticFile, std::less<>> files_;
};

}  // namespace vela::host
