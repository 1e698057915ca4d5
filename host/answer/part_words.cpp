#include "host/answer/part_words.h"

#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

using source_status::PartState;

std::string FormatAmount(std::int64_t amount, const VELAPart& part, const Texts& texts) {
  const std::string unit = Sanitize(part.unit);
  const std::string number =
      unit == "mV" ? FormatNumber(static_cast<double>(amount) / 1000, texts) : FormatFigure(amount);
  const std::string* text = texts.FindText("part", "unit " + unit);
  return text != nullptr ? FillPlaceholders(*text, {number}) : number + "\u00A0" + unit;
}

}  // namespace

std::string NameGroup(source_status::PartKind kind, const Texts& texts) {
  const char* name = source_status::kPartKindNames[static_cast<std::size_t>(kind)];
  return texts.GetText("part", std::string("group ") + name);
}

std::string NameState(const VELAPart& part, const Texts& texts) {
  const char* name = source_status::kPartStateNames[static_cast<std::size_t>(part.state)];
  return texts.GetText("part", std::string("state ") + name);
}

std::string FormatReading(const VELAPart& part, const Texts& texts) {
  return part.unit[0] == '\0' ? "" : FormatAmount(part.reading, part, texts);
}

std::string FormatMark(const VELAPart& part, const Texts& texts) {
  return part.unit[0] == '\0' || part.mark == 0 ? "" : FormatAmount(part.mark, part, texts);
}

std::string FormatUse(const VELAPart& part, const Texts& texts) {
  if (part.total == 0) return "";
  const double share = static_cast<double>(part.used) / static_cast<double>(part.total);
  const double rounded = static_cast<int>(share * 100) / 100.0;
  return FillPlaceholders(texts.GetText("part", "used_of"),
                          {FormatBytes(part.used, texts), FormatBytes(part.total, texts),
                           FormatPercent(rounded, texts)});
}

bool IsTroubled(const VELAPart& part) {
  return part.state == PartState::Attention || part.state == PartState::Failed ||
         part.state == PartState::Missing;
}

}  // namespace host
