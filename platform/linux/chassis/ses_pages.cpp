#include "platform/linux/chassis/ses_pages.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace linux_platform {
namespace {

using State = EnclosurePart::State;

constexpr std::uint8_t kPowerSupply = 0x02, kCooling = 0x03;  // element types
constexpr std::size_t kPageHeader = 8, kEnclosureDescriptor = 40;

class Cursor {
 public:
  explicit Cursor(PageBytes rest) : rest_(rest) {}
  // The next `count` bytes; nothing, and nothing ever after, when there are fewer.
  std::optional<PageBytes> Take(std::size_t count) {
    if (count > rest_.size()) {
      rest_ = {};
      return std::nullopt;
    }
    const PageBytes taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

 private:
  PageBytes rest_;
};

std::size_t Number16(PageBytes bytes) { return std::size_t{bytes[0]} << 8 | bytes[1]; }

struct Page {
  std::uint8_t second;  // byte 1: what it means differs from page to page
  PageBytes generation, body;
};

// The page without what lies behind its stated end.
std::optional<Page> OpenPage(std::uint8_t code, PageBytes bytes) {
  if (bytes.size() < kPageHeader || bytes[0] != code) return {};
  const std::size_t end = Number16(bytes.subspan(2)) + 4;
  if (end < kPageHeader || end > bytes.size()) return {};
  return Page{bytes[1], bytes.subspan(4, 4), bytes.subspan(kPageHeader, end - kPageHeader)};
}

// Fixed fields hold whatever a vendor wrote, padded with blanks or NULs.
std::string Printable(PageBytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes)
    text += byte == 0 ? ' ' : byte < 0x20 || byte > 0x7E ? '?' : static_cast<char>(byte);
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Hexadecimal(PageBytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

struct ElementType {
  std::uint8_t kind;
  std::size_t count;
};
using ElementTypes = std::vector<ElementType>;

// The types in the order in which the other two pages list their elements.
std::optional<ElementTypes> ReadConfiguration(const Page& page, Enclosure& enclosure) {
  Cursor cursor(page.body);
  std::size_t typeCount = 0;
  const std::size_t subenclosures = page.second;
  for (std::size_t i = 0; i <= subenclosures; ++i) {
    const auto head = cursor.Take(4);
    if (!head) return {};
    const std::size_t length = std::size_t{(*head)[3]} + 4;
    const auto rest = cursor.Take(length - 4);
    if (!rest || length < kEnclosureDescriptor) return {};
    typeCount += (*head)[2];
    if (i > 0) continue;
    enclosure.id = Hexadecimal(rest->first(8));
    enclosure.product = Printable(rest->subspan(16, 16));
  }
  ElementTypes types;
  for (std::size_t i = 0; i < typeCount; ++i) {
    const auto header = cursor.Take(4);
    if (!header) return {};
    types.push_back({(*header)[0], (*header)[1]});
  }
  return types;
}

State JudgeElement(std::uint8_t kind, PageBytes element) {
  constexpr int kOk = 1, kCritical = 2, kNoncritical = 3, kUnrecoverable = 4, kNotInstalled = 5,
                kUnavailable = 7;
  constexpr std::uint8_t kPredicted = 0x40;                // of byte 0
  constexpr std::uint8_t kFail = 0x40, kPowerFail = 0x03;  // of byte 3; AC, DC
  const int code = element[0] & 0x0F;
  if (code == kNotInstalled) return State::Absent;
  if (code == kCritical || code == kUnrecoverable) return State::Failed;
  // With any other code the enclosure says that the bits below mean nothing.
  if (code != kOk && code != kNoncritical && code != kUnavailable) return State::Unknown;
  const int failures = kind == kPowerSupply ? kFail | kPowerFail : kFail;
  if ((element[3] & failures) != 0) return State::Failed;
  return (element[0] & kPredicted) != 0 ? State::Failing : State::Ok;
}

// In tens of turns a minute, eleven bits; 0 where the fan is not measured.
int ReadSpeed(std::uint8_t kind, PageBytes element) {
  return kind == kCooling ? ((element[1] & 0x07) << 8 | element[2]) * 10 : 0;
}

std::vector<EnclosurePart>* FindParts(std::uint8_t kind, Enclosure& enclosure) {
  if (kind == kPowerSupply) return &enclosure.supplies;
  return kind == kCooling ? &enclosure.fans : nullptr;
}

// The first element of each type is only a summary of the others.
bool ReadStatus(const Page& page, const ElementTypes& types, Enclosure& enclosure) {
  Cursor cursor(page.body);
  for (const ElementType& type : types) {
    if (!cursor.Take(4)) return false;
    auto* parts = FindParts(type.kind, enclosure);
    for (std::size_t i = 0; i < type.count; ++i) {
      const auto element = cursor.Take(4);
      if (!element) return false;
      if (parts == nullptr) continue;
      const char* kind = type.kind == kCooling ? "Fan " : "Supply ";
      parts->push_back({kind + std::to_string(parts->size() + 1), JudgeElement(type.kind, *element),
                        ReadSpeed(type.kind, *element)});
    }
  }
  return true;
}

std::optional<std::string> TakeName(Cursor& cursor) {
  const auto head = cursor.Take(4);
  if (!head) return {};
  const auto text = cursor.Take(Number16(head->subspan(2)));
  if (!text) return {};
  return Printable(*text);
}

void ReadNames(const Page& page, const ElementTypes& types, Enclosure& enclosure) {
  Cursor cursor(page.body);
  std::array<std::size_t, 2> at = {};  // fans, supplies
  for (const ElementType& type : types) {
    auto* parts = FindParts(type.kind, enclosure);
    std::size_t& next = at[type.kind == kPowerSupply ? 1 : 0];
    if (!TakeName(cursor)) return;
    for (std::size_t i = 0; i < type.count; ++i) {
      const auto name = TakeName(cursor);
      if (!name) return;
      if (parts == nullptr) continue;
      if (!name->empty()) (*parts)[next].name = *name;
      ++next;
    }
  }
}

}  // namespace

std::optional<Enclosure> ParseSesPages(PageBytes configuration, PageBytes status, PageBytes names,
                                       std::string& reason) {
  const auto configured = OpenPage(0x01, configuration);
  const auto stated = OpenPage(0x02, status);
  const auto named = OpenPage(0x07, names);
  Enclosure enclosure;
  const auto types =
      configured ? ReadConfiguration(*configured, enclosure) : std::optional<ElementTypes>();
  if (!configured)
    reason = "its configuration page (01h) is cut short";
  else if (!types)
    reason = "its configuration page (01h) promises more than it holds";
  else if (!stated)
    reason = "its status page (02h) is cut short";
  else if (!std::ranges::equal(configured->generation, stated->generation))
    reason = "it was reconfigured while it was read";
  else if (!ReadStatus(*stated, *types, enclosure))
    reason = "its status page (02h) has fewer elements than its configuration";
  if (!reason.empty()) return std::nullopt;
  if (named && std::ranges::equal(configured->generation, named->generation))
    ReadNames(*named, *types, enclosure);
  return enclosure;
}

}  // namespace linux_platform
