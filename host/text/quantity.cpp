#include "host/text/quantity.h"

#include <cstdio>
#include <ctime>
#include <sstream>

namespace host {
namespace {

// At most `decimals`, and none that says nothing: "5", not "5.0".
std::string Decimal(double value, int decimals, const Texts& texts) {
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.*f", decimals, value);
  std::string text = digits;
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') return text.substr(0, point);
  return text.replace(point, 1, texts.FormatUi("decimal_point"));
}

}  // namespace

std::string FormatBytes(std::uint64_t bytes, const Texts& texts) {
  constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; value >= 1000 && unit + 1 < std::size(kUnits); ++unit) value /= 1024;
  return Decimal(value, value < 100 && unit > 0 ? 1 : 0, texts) + "\u00A0" + kUnits[unit];
}

std::string FormatCount(std::uint64_t count) {
  std::string digits = std::to_string(count);
  for (std::size_t end = digits.size(); end > 3; end -= 3) digits.insert(end - 3, "\u202F");
  return digits;
}

std::string FormatFigure(std::int64_t figure) {
  const auto count = static_cast<std::uint64_t>(figure);
  return figure < 0 ? "-" + FormatCount(0 - count) : FormatCount(count);
}

std::string FormatMilliseconds(std::uint32_t microseconds, const Texts& texts) {
  return Decimal(microseconds / 1000.0, microseconds < 1000 ? 2 : 1, texts) + "\u00A0ms";
}

std::string FormatPercent(double share, const Texts& texts) {
  return Decimal(share * 100, 2, texts) + "\u00A0%";
}

std::string FormatNumber(double value, const Texts& texts) {
  std::ostringstream digits;
  digits << value;
  std::string text = digits.str();
  const std::size_t point = text.find('.');
  return point == text.npos ? text : text.replace(point, 1, texts.FormatUi("decimal_point"));
}

std::string FormatUptime(const std::string& uptime, const Texts& texts) {
  int hours = 0, minutes = 0, seconds = 0;
  if (std::sscanf(uptime.c_str(), "%d:%d:%d", &hours, &minutes, &seconds) != 3) return {};
  if (hours >= 48) {
    return texts.FormatUi("days", std::to_string(hours / 24), std::to_string(hours % 24));
  }
  if (hours > 0) return texts.FormatUi("hours", std::to_string(hours), std::to_string(minutes));
  return texts.FormatUi("minutes", std::to_string(minutes));
}

std::string FormatLocalTime(const char* format) {
  return FormatLocalTime(format, std::time(nullptr));
}

std::string FormatLocalTime(const char* format, std::int64_t time) {
  const auto seconds = static_cast<std::time_t>(time);
  std::tm local = {};
  localtime_r(&seconds, &local);
  char text[64];
  return {text, std::strftime(text, sizeof text, format, &local)};
}

std::string FormatUtcTime(std::int64_t time) {
  const auto seconds = static_cast<std::time_t>(time);
  std::tm utc = {};
  gmtime_r(&seconds, &utc);
  char text[64];
  return {text, std::strftime(text, sizeof text, "%FT%TZ", &utc)};
}

}  // namespace host
