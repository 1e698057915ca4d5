#include "host/site/fleet_list.h"

#include <json/writer.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

namespace host {
namespace {

constexpr const char* kWell = "healthy-four-bays";
constexpr unsigned kUsualBoxes = 1000, kMostBoxes = 20000, kBoxesOfOneSite = 100;

std::optional<unsigned> ParseNumber(const char* text, unsigned usual, unsigned least,
                                    unsigned most) {
  if (text == nullptr) return usual;
  unsigned number = 0;
  const char* const end = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, end, number);
  if (error != std::errc() || stop != end || number < least || number > most) return std::nullopt;
  return number;
}

// From 1 on: "box-00101.site-02.example".
struct BoxNames {
  std::array<char, 64> instance = {};
  std::array<char, 32> site = {};

  explicit BoxNames(unsigned number) {
    std::snprintf(site.data(), site.size(), "site-%02u", (number - 1) / kBoxesOfOneSite + 1);
    std::snprintf(instance.data(), instance.size(), "box-%05u.%s.example", number, site.data());
  }
};

}  // namespace

HttpAnswer ListFleet(const HttpRequest& request, const Demo& demo) {
  const std::vector<std::string>& scenarios = demo.Faults();
  const auto boxes = ParseNumber(request.argument("boxes"), kUsualBoxes, 1, kMostBoxes);
  const auto faults =
      ParseNumber(request.argument("faults"), 0, 0, scenarios.empty() ? 0 : boxes.value_or(0));
  if (!boxes || !faults) {
    return Problem(400, "No such fleet",
                   "\"boxes\" is a number from 1 to " + std::to_string(kMostBoxes) +
                       ", and \"faults\" one from 0 to that of the boxes: "
                       "/fleet?boxes=1000&faults=37.");
  }
  const char* const address = request.header("Host");
  if (address == nullptr) {
    return Problem(400, "No host", "The boxes have the Host of this request, which names none.");
  }
  const std::string start = "{\"targets\":[" + Json::valueToQuotedString(address) +
                            "],\"labels\":{\"__metrics_path__\":\"/metrics\",\"instance\":\"";
  std::string list;
  for (unsigned box = 0; box < *boxes; ++box) {
    // How many of the faults are in the boxes before this one, and up to it.
    const unsigned before = box * *faults / *boxes, upTo = (box + 1) * *faults / *boxes;
    const std::string& scenario = before == upTo ? kWell : scenarios[before % scenarios.size()];
    const BoxNames names(box + 1);
    list += list.empty() ? "[\n" : ",\n";
    list.append(start).append(names.instance.data()).append("\",\"site\":\"");
    list.append(names.site.data()).append("\",\"__param_scenario\":");
    list.append(Json::valueToQuotedString(scenario.c_str())).append("}}");
  }
  return {200, "application/json", list + "\n]\n"};
}

}  // namespace host
