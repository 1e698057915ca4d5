// The fans and power supplies of an enclosure, out of the diagnostic pages that SES
// enclosures answer with: 01h configuration, 02h status, 07h element names.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/chassis/enclosure_snapshot.h"

namespace linux_platform {

using PageBytes = std::span<const std::uint8_t>;

// The parts in the order of the pages, those of subenclosures too. Nothing when page 01h
// or 02h is cut short, promises more than it holds, or is of another generation than its
// fellow; `reason` says which. Page 07h may be empty or broken: only names suffer.
std::optional<Enclosure> ParseSesPages(PageBytes configuration, PageBytes status, PageBytes names,
                                       std::string& reason);

}  // namespace linux_platform
