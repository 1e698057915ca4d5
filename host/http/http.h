// A request and its answer, apart from any server.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace host {

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
  bool operator==(const HttpAnswer&) const = default;
};

// What the machine is to be asked: all of a request that its answer depends on. Requests with
// equal questions that wait together may get one answer.
struct Question {
  std::string path;
  std::string scenario = {};  // of a demo; empty: none
  bool operator==(const Question&) const = default;
};

// From memory: an answer made for this request, or one that is always the same and lives as long
// as the site. Else the question that the answer takes.
using Reaction = std::variant<HttpAnswer, const HttpAnswer*, Question>;

// What a server serves. Both throw only std::bad_alloc and Failure; the server makes a problem
// of either.
class Site {
 public:
  virtual ~Site() = default;
  // Never waits. Called by one thread at a time.
  virtual Reaction React(const HttpRequest& request) const = 0;
  // May wait for hardware, and is called from several threads at once. So many requests,
  // one or more, get the answer.
  virtual HttpAnswer Ask(const Question& question, std::size_t requests) const = 0;
};

}  // namespace host
