#include "host/http/http.h"

#include "common/json_writer.h"
#include "host/text/escape.h"

namespace host {
namespace {

// In the style of the page, to which its link leads back.
std::string ProblemPage(const char* title, const std::string& detail,
                        const std::vector<std::string>& available) {
  std::string list;
  for (const std::string& name : available) list += WrapInTag("li", MakeElement("code", name));
  return "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<link rel=\"icon\" href=\"data:,\">\n<link rel=\"stylesheet\" href=\"/style.css\">\n" +
         MakeElement("title", title) + "</head>\n<body class=\"single\">\n" +
         WrapInTag("main",
                   WrapInTag("div", MakeElement("h1", title, "class=\"sentence\""),
                             "class=\"headline\"") +
                       MakeElement("p", detail) + (list.empty() ? "" : WrapInTag("ul", list)) +
                       WrapInTag("p", MakeElement("a", "The health of this machine", "href=\"/\"")),
                   "class=\"widget\"") +
         "</body>\n</html>\n";
}

}  // namespace

HttpAnswer Problem(unsigned status, const char* title, const std::string& detail,
                   const std::vector<std::string>& available) {
  Json::Value problem(Json::objectValue);
  problem["type"] = "about:blank";
  problem["title"] = title;
  problem["status"] = status;
  problem["detail"] = detail;
  for (const std::string& name : available) problem["available"].append(name);
  return {status,
          "application/problem+json",
          common::WriteCompact(problem),
          {{"Vary", "Accept"}},
          ProblemPage(title, detail, available)};
}

HttpAnswer AnswerHealthz(const HttpRequest& request) {
  if (!request.machineHangs()) return {200, "text/plain; charset=utf-8", "ok\n"};
  return Problem(503, "Hangs",
                 "The machine has been asked for longer than anybody waits for an answer. Restart "
                 "this server.");
}

}  // namespace host
