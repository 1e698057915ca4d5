#include "platform/linux/ups/ups_status.h"

#include <algorithm>
#include <charconv>

namespace linux_platform {
namespace {

// Takes the first word off `rest`; empty at the end. Quotes around a word come off.
std::string_view NextWord(std::string_view& rest) {
  constexpr std::string_view kBlanks = " \t\r\n";
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  std::string_view word = rest.substr(0, rest.find_first_of(kBlanks));
  rest.remove_prefix(word.size());
  if (word.size() >= 2 && word.front() == '"' && word.back() == '"')
    word = word.substr(1, word.size() - 2);
  return word;
}

std::string LoopbackAddress(std::string_view host) {
  if (host.empty() || host == "localhost") return "127.0.0.1";
  const bool isIPv4 = host.find_first_not_of("0123456789.") == std::string_view::npos;
  return host == "::1" || (isIPv4 && host.starts_with("127.")) ? std::string(host) : "";
}

}  // namespace

UpsState JudgeUpsWords(std::string_view words) {
  bool fsd = false, ob = false, ol = false, lb = false, cal = false;
  for (std::string_view word; !(word = NextWord(words)).empty();) {
    fsd |= word == "FSD";  // forced shutdown
    ob |= word == "OB";    // on battery
    ol |= word == "OL";    // on line
    lb |= word == "LB";    // low battery
    cal |= word == "CAL";  // calibrating: empties its battery on purpose
  }
  if (fsd) return UpsState::BatteryLow;
  if (ob && lb && !cal) return UpsState::BatteryLow;
  if (lb && !ol && !ob) return UpsState::BatteryLow;
  if (ob) return UpsState::OnBattery;
  // Drivers flood LB while on mains: it means a worn battery there, not a flat one.
  return ol ? UpsState::OnMains : UpsState::Unknown;
}

UpsAddress ParseUpsAddress(std::string_view text) {
  UpsAddress address;
  const std::size_t at = std::min(text.find('@'), text.size());
  address.name = text.substr(0, at);
  std::string_view host = text.substr(std::min(at + 1, text.size()));
  std::string_view port;
  if (host.starts_with('[')) {
    const std::size_t end = std::min(host.find(']'), host.size());
    port = host.substr(std::min(end + 1, host.size()));
    host = host.substr(1, end - 1);
  } else if (const std::size_t colon = host.find(':'); colon != std::string_view::npos) {
    port = host.substr(colon);
    host = host.substr(0, colon);
  }
  if (port.starts_with(':'))
    std::from_chars(port.data() + 1, port.data() + port.size(), address.port);
  address.host = LoopbackAddress(host);
  return address;
}

std::vector<UpsAddress> ParseMonitors(std::string_view text) {
  std::vector<UpsAddress> addresses;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (NextWord(line) == "MONITOR") addresses.push_back(ParseUpsAddress(NextWord(line)));
  }
  return addresses;
}

}  // namespace linux_platform
