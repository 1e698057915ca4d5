// The page's own files, read once at the start: no request ever reaches the file system.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "host/http/http.h"

namespace host {

class StaticFiles {
 public:
  // The page and the API's description in `data`/www, the texts in `data`/texts. Throws Failure
  // when one is missing. With `demo` the gallery, too.
  StaticFiles(const std::filesystem::path& data, bool demo);

  // The file at the request's path ("/", "/widget.js", "/texts/de.json"), packed for who can
  // unpack it, or that it is what the client already has; none when there is no such file.
  std::optional<HttpAnswer> Answer(const HttpRequest& request) const;

 private:
  struct File {
    struct Form {
      std::string tag;  // changes with the bytes
      std::string bytes;
    };
    const char* contentType;
    Form plain, gzip;
  };

  void Add(const std::string& path, const char* contentType, std::string bytes);

  std::map<std::string, File, std::less<>> files_;
};

}  // namespace host
