// Numbers as people write them.
#pragma once

#include <cstdint>
#include <string>

#include "host/text/texts.h"

namespace host {

// "4.1 GiB", "93.1 GiB", "512 B"; in German "4,1 GiB".
std::string FormatBytes(std::uint64_t bytes, const Texts& texts);
// 240000000 as "240 000 000", with narrow blanks.
std::string FormatCount(std::uint64_t count);
// The same of what may be below zero.
std::string FormatFigure(std::int64_t figure);
// 1234 as "1.2 ms".
std::string FormatMilliseconds(std::uint32_t microseconds, const Texts& texts);
// 0.05 as "5 %".
std::string FormatPercent(double share, const Texts& texts);
// 2.2 as "2.2", 40 as "40"; in German "2,2".
std::string FormatNumber(double value, const Texts& texts);
// "26:3:4" (hours, minutes, seconds) as "26 h 3 min"; empty when it is not known.
std::string FormatUptime(const std::string& uptime, const Texts& texts);
// The time of day and the date, by a format of strftime(3): "%F" is 2024-02-29.
std::string FormatLocalTime(const char* format);
// Of `time`, in seconds since 1970.
std::string FormatLocalTime(const char* format, std::int64_t time);
// "2024-02-29T12:00:00Z".
std::string FormatUtcTime(std::int64_t time);

}  // namespace host
