#include "platform/linux/scan/lynis_report.h"

#include <algorithm>
#include <array>
#include <string>

#include "common/json_reader.h"

namespace linux_platform {
namespace {

using common::FindMember;

constexpr std::time_t kUpdateGrace = std::time_t{14} * 24 * 60 * 60;  // seconds
constexpr std::string_view kWarning = "warning[]=", kPackage = "vulnerable_package[]=";
constexpr const char* kUnnamed = "(not named)";  // where the scan only counts them

// Several accounts with UID 0; accounts without a password, by three tests; malware.
constexpr std::array<std::string_view, 5> kDangers = {"AUTH-9204", "AUTH-9218", "AUTH-9254",
                                                      "AUTH-9283", "MALW-"};
constexpr std::string_view kVulnerable = "PKGS-7392";

std::time_t FindKnownSince(const Json::Value& before, const std::string& package, std::time_t now) {
  const Json::Value* times = FindMember(before, "vulnerableSince");
  const Json::Value* since = times != nullptr ? FindMember(*times, package.c_str()) : nullptr;
  const bool known = since != nullptr && since->isInt64() && since->asInt64() >= 0;
  return known ? std::min<std::time_t>(since->asInt64(), now) : now;
}

// "AUTH-9204|Multiple users with UID 0 found in passwd file|-|-|" becomes
// "AUTH-9204: Multiple users with UID 0 found in passwd file".
std::string DescribeWarning(std::string_view warning) {
  const std::size_t bar = std::min(warning.find('|'), warning.size());
  std::string words(warning.substr(0, bar));
  const std::string_view text = warning.substr(std::min(bar + 1, warning.size()));
  words.append(": ").append(text.substr(0, text.find('|')));
  std::ranges::replace_if(
      words, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
  return words;
}

}  // namespace

Json::Value ConvertLynisReport(std::string_view report, const Json::Value& before,
                               std::time_t now) {
  bool finished = false, countsHoles = false;
  Json::Value reasons(Json::arrayValue), dangers(Json::arrayValue), since(Json::objectValue);
  const auto remember = [&](const std::string& package) {
    since[package] = Json::Int64{FindKnownSince(before, package, now)};
  };
  while (!report.empty()) {
    const std::size_t end = std::min(report.find('\n'), report.size());
    const std::string_view line = report.substr(0, end);
    report.remove_prefix(std::min(end + 1, report.size()));
    if (line == "finish=true") finished = true;
    if (line.starts_with(kPackage)) remember(std::string(line.substr(kPackage.size())));
    if (!line.starts_with(kWarning)) continue;
    const std::string_view warning = line.substr(kWarning.size());
    reasons.append(DescribeWarning(warning));
    const auto isOf = [warning](std::string_view test) { return warning.starts_with(test); };
    if (std::ranges::any_of(kDangers, isOf)) dangers.append(DescribeWarning(warning));
    countsHoles = countsHoles || warning.starts_with(kVulnerable);
  }
  if (!finished) return {};
  if (countsHoles && since.empty()) remember(kUnnamed);
  bool danger = !dangers.empty();
  for (auto package = since.begin(); package != since.end(); ++package)
    danger = danger || now - package->asInt64() > kUpdateGrace;
  Json::Value result(Json::objectValue);
  result["sysStatus"] = danger ? "danger" : reasons.empty() ? "safe" : "warning";
  result["reasons"] = std::move(reasons);
  result["dangers"] = std::move(dangers);
  result["vulnerableSince"] = std::move(since);
  return result;
}

}  // namespace linux_platform
