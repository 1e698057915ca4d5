// Whatever fragments, references and priorities a checker composes a finding of: each
// reference is in the finding, numbered by its place, or in the log.
#include <fuzzer/FuzzedDataProvider.h>

#include "SystemChecker/checker_rule.h"
#include "fuzz/one_request.h"
#include "tests/support/recorded_log.h"

namespace {

using namespace VELA::SystemHealth;

std::string Text(FuzzedDataProvider& data) { return data.ConsumeRandomLengthString(12); }

TextReference Reference(FuzzedDataProvider& data) { return {Text(data), Text(data)}; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  RecordedLog().clear();
  StringFormatter formatter{Text(data), data.ConsumeBool() ? "{}" : Text(data)};
  std::vector<TextReference> references;
  std::size_t fragments = 0;
  for (int left = data.ConsumeIntegralInRange(0, 6); left > 0; --left, ++fragments) {
    if (data.ConsumeBool()) {
      formatter.Push(FormatUnit{Text(data), std::nullopt});
    } else {
      formatter.Push(FormatUnit{Text(data), references.emplace_back(Reference(data))});
    }
  }
  fuzz::Require(formatter.Empty() == (fragments == 0), "empty is without a fragment");

  std::vector<TextReference> closing;
  for (int left = data.ConsumeIntegralInRange(0, 4); left > 0; --left)
    closing.push_back(Reference(data));
  const Description description = formatter.PopDescription(Text(data), closing);
  const std::size_t placed = description.params.size() - references.size();
  fuzz::Require(placed + RecordedLog().size() == closing.size(), "placed or logged");
  // A placeholder that a number can hold is found again where one was filled in.
  const bool plain = formatter.placeholder == "{}" ||
                     formatter.placeholder.find_first_of("0123456789{}") == std::string::npos;
  for (std::size_t n = references.size(); plain && n < description.params.size(); ++n)
    fuzz::Require(description.format.find("{" + std::to_string(n) + "}") != std::string::npos,
                  "each closing reference has its number");

  const double priority = data.ConsumeFloatingPoint<double>();
  const Json::Value rule =
      CheckerRule(CheckerRuleType::Warning, priority, Text(data), description).ToJson();
  fuzz::Require(rule["priority"].isDouble() && !(rule["priority"].asDouble() > 40.0) &&
                    !(rule["priority"].asDouble() < -20.0),
                "a priority on the scale");
  const Json::Value& params = rule["description"]["description_params"];
  fuzz::Require(params.isArray() && params.size() == description.params.size(), "all are sent");
  return 0;
}
