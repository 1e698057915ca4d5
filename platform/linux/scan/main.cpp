// vela-lynis-result: turns the report of a finished lynis scan into the security scan's
// result, which the health module reads.
#include <getopt.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <iostream>

#include "common/json_reader.h"
#include "platform/linux/base/replace_file.h"
#include "platform/linux/base/root.h"
#include "platform/linux/scan/lynis_report.h"

using namespace linux_platform;

namespace {

enum Exit { kDone = 0, kNoResult = 1, kUsage = 64 };

constexpr std::size_t kReportCap = std::size_t{16} << 20;
constexpr const char* kUsageText =
    "Usage: vela-lynis-result [--report FILE] [--result FILE]\n"
    "Turns the report of a finished lynis scan into the security scan's result.\n"
    "  --report FILE  by default /var/log/lynis-report.dat\n"
    "  --result FILE  by default /var/lib/securityscan/systemResult.json\n"
    "Exit status: 0 written; 1 no finished report, or the result could not be written: what\n"
    "was there stays; 64 the arguments are wrong.\n";

int Fail(const std::string& words) {
  std::cerr << "vela-lynis-result: " << words << "\n";
  return kNoResult;
}

int PrintUsage(std::ostream& stream, Exit status) {
  stream << kUsageText;
  return status;
}

int Convert(const std::string& report, const std::string& result) {
  std::string text;
  const ReadResult read = ReadSmallFile(report.c_str(), kReportCap, text);
  if (read == ReadResult::TooLarge) return Fail(report + " is larger than 16 MiB");
  if (read != ReadResult::Read)
    return Fail(report + " could not be read: " + std::strerror(errno) +
                ". A scan writes it: lynis audit system --cronjob");
  Json::Value before;
  common::ReadJsonFile(result.c_str(), before);
  const Json::Value converted = ConvertLynisReport(text, before, std::time(nullptr));
  if (converted.isNull()) return Fail(report + " is not of a finished scan");
  if (!MakeFolder(result.substr(0, result.rfind('/')), 0755) ||
      !ReplaceFile(result, converted.toStyledString()))
    return Fail(result + " could not be written: " + std::strerror(errno));
  return kDone;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr option kOptions[] = {{"report", required_argument, nullptr, 'r'},
                                 {"result", required_argument, nullptr, 'w'},
                                 {"help", no_argument, nullptr, 'h'},
                                 {}};
  std::string report = "/var/log/lynis-report.dat";
  std::string result = "/var/lib/securityscan/systemResult.json";
  for (int found; (found = getopt_long(count, arguments, "h", kOptions, nullptr)) != -1;) {
    if (found == 'h') return PrintUsage(std::cout, kDone);
    if (found == '?') return PrintUsage(std::cerr, kUsage);
    (found == 'r' ? report : result) = optarg;
  }
  if (optind != count || result.find('/') == std::string::npos)
    return PrintUsage(std::cerr, kUsage);
  return Convert(report, result);
}
