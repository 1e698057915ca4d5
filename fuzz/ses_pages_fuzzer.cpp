// Whatever an enclosure answers: a whole list of parts with printable names, or a reason.
// The first four bytes are the lengths of the first two pages.
#include <algorithm>
#include <cstdlib>

#include "platform/linux/chassis/ses_pages.h"

using namespace linux_platform;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

PageBytes Take(PageBytes& rest, std::size_t size) {
  const PageBytes page = rest.first(std::min(size, rest.size()));
  rest = rest.subspan(page.size());
  return page;
}

bool IsPrintable(const std::string& text) {
  return std::ranges::all_of(text, [](char c) { return c >= 0x20 && c <= 0x7E; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  PageBytes rest(data + 4, size - 4);
  const PageBytes configuration = Take(rest, std::size_t{data[0]} << 8 | data[1]);
  const PageBytes status = Take(rest, std::size_t{data[2]} << 8 | data[3]);
  std::string reason;
  const auto enclosure = ParseSesPages(configuration, status, rest, reason);
  Require(enclosure.has_value() == reason.empty());
  if (!enclosure) return 0;
  Require(enclosure->id.size() == 16 && enclosure->product.size() <= 16);
  Require(IsPrintable(enclosure->product));
  // Every part has four bytes in the status page.
  Require((enclosure->fans.size() + enclosure->supplies.size()) * 4 <= status.size());
  for (const auto* parts : {&enclosure->fans, &enclosure->supplies})
    for (const EnclosurePart& part : *parts)
      Require(!part.name.empty() && IsPrintable(part.name));
  return 0;
}
