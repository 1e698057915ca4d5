#include "host/http/http.h"

#include "common/json_writer.h"

namespace host {

HttpAnswer Problem(unsigned status, const char* title, const std::string& detail,
                   const std::vector<std::string>& available) {
  Json::Value problem(Json::objectValue);
  problem["type"] = "about:blank";
  problem["title"] = title;
  problem["status"] = status;
  problem["detail"] = detail;
  for (const std::string& name : available) problem["available"].append(name);
  return {status, "application/problem+json", common::WriteCompact(problem)};
}

}  // namespace host
