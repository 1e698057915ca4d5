#include "host/answer/evidence.h"

#include "host/answer/sources.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

// "new_key (md0, 3, 4)".
std::string NameEvidence(const VELAEvidence& evidence, const std::string& part) {
  std::string words = Sanitize(evidence.key) + " (";
  if (!part.empty()) words += part + ", ";
  words += FormatFigure(evidence.figure);
  if (evidence.mark != 0) words += ", " + FormatFigure(evidence.mark);
  return words + ")";
}

// " (coretemp)": which driver or daemon has read it; empty where nobody tells.
std::string FormatSource(const VELAPart* part, const Texts& texts) {
  if (part == nullptr || part->device[0] == '\0') return "";
  return FillPlaceholders(texts.Resolve("part:source"), {Sanitize(part->device)});
}

std::string FormatSentence(const VELAEvidence& evidence, const Parts& parts, const Texts& texts) {
  const std::string part = DescribePart(evidence.part, parts, texts);
  const std::string* text = texts.FindCounted("evidence", evidence.key, evidence.figure);
  if (text == nullptr) return NameEvidence(evidence, part);
  return FillNames(*text, {{"part", part},
                           {"source", FormatSource(FindPart(parts, evidence.part), texts)},
                           {"figure", FormatFigure(evidence.figure)},
                           {"mark", FormatFigure(evidence.mark)},
                           {"other", FormatFigure(evidence.other)},
                           {"words", Sanitize(evidence.words)},
                           {"path", Sanitize(evidence.path)}});
}

// Of what is gone a person looks for the place, not for its name.
std::string NameRelated(const VELARelatedPart& related, const Parts& parts, const Texts& texts) {
  const VELAPart* part = FindPart(parts, related.part);
  const bool gone = part != nullptr && part->state == source_status::PartState::Missing;
  const std::string details = gone ? FormatDetails(*part, parts, texts) : "";
  return details.empty() ? DescribePart(related.part, parts, texts) : details;
}

// "Missing: bay 3"; a relation without a text stands for itself.
std::string FormatRelated(const VELARelatedPart& related, const Parts& parts, const Texts& texts) {
  const std::string name = NameRelated(related, parts, texts);
  const std::string* text = texts.FindText("part", related.relation);
  return text != nullptr ? FillPlaceholders(*text, {name})
                         : texts.AddLabel(Sanitize(related.relation)) + name;
}

}  // namespace

ToldCause FormatCause(const VELAEvidence& evidence, const Parts& parts, const Texts& texts) {
  ToldCause cause{{FormatSentence(evidence, parts, texts)}, Sanitize(evidence.show), {}};
  for (std::uint32_t i = 0; i < evidence.relatedCount; ++i)
    cause.lines.push_back(FormatRelated(evidence.related[i], parts, texts));
  const auto add = [&](const char* text, const std::string& value) {
    cause.lines.push_back(FillPlaceholders(texts.Resolve(text), {value}));
  };
  if (evidence.moreRelated != 0) add("part:more", FormatCount(evidence.moreRelated));
  if (evidence.since > 0) add("part:since", FormatLocalTime("%F %R", evidence.since));
  for (const char* command : evidence.mend)
    if (command[0] != '\0') cause.mend.push_back(Sanitize(command));
  return cause;
}

std::vector<ToldCause> FormatCauses(const Evidence& evidence, std::string_view check,
                                    const Texts& texts) {
  std::vector<ToldCause> causes;
  for (const VELAEvidence& record : evidence.records)
    if (check.empty() || check == record.check)
      causes.push_back(FormatCause(record, evidence.parts, texts));
  return causes;
}

}  // namespace host
