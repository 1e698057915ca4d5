// A request and its answer, apart from any server.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vela::host {

struct HttpRequest {
  std::string_view path;  // decoded, without the query
  // Of the query; null when it is not there.
  const char* (*argument)(const void* connection, const char* name) = nullptr;
  const char* (*header)(const void* connection, const char* name) = nullptr;
  const void* connection = nullptr;

  const char* Argument(const char* name) const {
    return argument == nullptr ? nullptr : argument(connection, name);
  }
  const char* Header(const char* name) const {
    return header == nullptr ? nullptr : header(connection, name);
  }
};

struct HttpAnswer {
  unsigned status = 200;
  const char* contentType = "text/plain; charset=utf-8";
  std::string body;
  std::vector<std::pair<const char*, std::string>> headers = {};  // beside the usual ones
  std::string_view fixed = {};  // in place of `body`: bytes that outlive the server
};

// What a server serves. Called from several threads at once.
class Site {
 public:
  virtual ~Site() = default;
  // Whether the answer may have to wait for hardware; such requests run apart from the
  // threads that serve connections.
  virtual bool MayWait(std::string_view path) const = 0;
  // Throws only std::bad_alloc and Failure; the server makes a problem of both.
  virtual HttpAnswer Answer(const HttpRequest& request) const = 0;
};

}  // namespace vela::host
