// The page's own files, read once at the start: no request ever reaches the file system.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "host/http/http.h"

namespace host {

struct StaticFile {
  // As it is, or packed.
  struct Form {
    std::string tag;  // changes with the bytes
    HttpAnswer whole, unchanged;
  };
  Form plain, gzip;
};

class StaticFiles {
 public:
  // The page in `data`/www and the texts in `data`/texts. Throws Failure when one is missing.
  // With `demo` the gallery, too.
  StaticFiles(const std::filesystem::path& data, bool demo);

  // By path: "/", "/widget.js", "/texts/de.json"; null when there is none.
  const StaticFile* Find(std::string_view path) const;

 private:
  void Add(const std::string& path, const char* contentType, std::string bytes);

  std::map<std::string, StaticFile, std::less<>> files_;
};

}  // namespace host
