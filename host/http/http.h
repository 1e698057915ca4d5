// A request, its answer and who answers, apart from any server library.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace host {

struct HttpRequest {
  // By name; null when the request has none.
  using Lookup = std::function<const char*(const char* name)>;

  std::string_view path;  // decoded, without the query string
  Lookup argument;        // of the query string
  Lookup header;
  // Whether the machine has been asked for longer than anybody waits for its answer.
  std::function<bool()> machineHangs;
};

struct HttpAnswer {
  unsigned status = 200;
  const char* contentType = "text/plain; charset=utf-8";
  std::string body;
  std::vector<std::pair<const char*, std::string>> headers = {};  // beside the usual ones
  std::string page = {};  // HTML for whoever asks for that instead; empty: all get the body
  bool packs = false;     // whoever can unpack it gets the body packed
};

// An error answer: application/problem+json (RFC 9457), and a page for a browser. `available`
// names what the caller could ask for instead; left out when empty.
HttpAnswer Problem(unsigned status, const char* title, const std::string& detail,
                   const std::vector<std::string>& available = {});

// Whether this server answers, for whoever restarts it: "ok", or a problem when the machine has
// been asked for so long that it does not.
HttpAnswer AnswerHealthz(const HttpRequest& request);

// What the machine is to be asked: all of a request that its answer depends on. Requests with
// equal queries may share one answer.
struct MachineQuery {
  std::string path;
  std::string scenario = {};  // of a demo; empty: none
  std::string language = {};  // of the complete answer
  bool openMetrics = false;   // of the metrics
  bool operator==(const MachineQuery&) const = default;
};

// What a server serves. Both functions throw only std::bad_alloc and Failure; the server makes an
// error answer of either.
class Site {
 public:
  virtual ~Site() = default;
  // The answer if it needs no machine, else what the machine is to be asked. The server's one
  // thread calls it, so it never waits.
  virtual std::variant<HttpAnswer, MachineQuery> Route(const HttpRequest& request) const = 0;
  // May wait for hardware, and is called by several threads at once. `requests`, one or more,
  // is how many get the answer.
  virtual HttpAnswer AskMachine(const MachineQuery& query, std::size_t requests) const = 0;
};

}  // namespace host
