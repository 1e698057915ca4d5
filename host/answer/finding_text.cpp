#include "host/answer/finding_text.h"

#include <cctype>
#include <vector>

#include "host/text/escape.h"
#include "host/text/placeholder.h"

namespace host {
namespace {

constexpr std::string_view kSeparator = ", ";

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsNumbered(std::string_view text) {
  return text.size() > 1 && text[0] == ' ' && IsDigits(text.substr(1, 1));
}

std::string MakeTail(std::size_t params) {
  return "{" + std::to_string(params - 2) + "} {" + std::to_string(params - 1) + "}";
}

bool OccursOnce(std::string_view text, std::string_view part) {
  return text.find(part) == text.rfind(part);
}

// The one placeholder of a piece "{0} NAME", "NAME{0}2", "USB {0} 1-2" or "{0}". The names
// are not escaped, so it is found by its place: at the start before a blank, else before a
// number at the end, else the one whose turn it is before a blank and a number, else alone.
std::optional<Placeholder> ChoosePlaceholder(std::string_view piece, std::string_view head,
                                             std::size_t turn, std::size_t count) {
  std::optional<Placeholder> last, next;
  for (auto found = FindPlaceholder(piece, 0); found; found = FindPlaceholder(piece, found->end)) {
    const std::string_view rest = piece.substr(found->end);
    if (found->number >= count) continue;
    if (found->begin == 0 && rest.starts_with(' ')) return found;
    if (IsDigits(rest)) last = found;
    const bool alone = found->begin == 0 && rest.empty() && OccursOnce(head, piece);
    if (!next && found->number == turn && (alone || IsNumbered(rest))) next = found;
  }
  return last ? last : next;
}

// "USB {0} 1" and "eSATA {0} 1" are one name: its start is a text of its own, "Disque USB".
const std::string* FindDevice(std::string_view piece, const Placeholder& found,
                              const Texts& texts) {
  if (!IsNumbered(piece.substr(found.end))) return nullptr;
  return texts.FindText("device", piece.substr(0, found.begin));
}

// A text that follows a name brings the blank between both, where its language has one.
void AppendText(std::string& line, std::string_view text) {
  if (text.starts_with(' ') && (line.empty() || line.back() == ' ')) text.remove_prefix(1);
  line.append(text);
}

// The pieces before the closing words: each names one thing, by at most one placeholder.
std::string RenderPieces(std::string_view head, const std::vector<std::string>& values,
                         const Texts& texts) {
  std::string text;
  std::size_t turn = 0;
  for (std::size_t at = 0; at <= head.size();) {
    const std::size_t end = std::min(head.find(kSeparator, at), head.size());
    const std::string_view piece = head.substr(at, end - at);
    if (const auto found = ChoosePlaceholder(piece, head, turn, values.size() - 2)) {
      const std::string* device = FindDevice(piece, *found, texts);
      if (device == nullptr) text.append(piece.substr(0, found->begin));
      AppendText(text, device != nullptr ? *device : values[found->number]);
      text.append(piece.substr(found->end));
      turn = found->number + 1;
    } else {
      text.append(piece);
    }
    if (end == head.size()) break;
    text.append(texts.FormatUi("list_comma"));
    at = end + kSeparator.size();
  }
  return text;
}

std::string Compose(std::string_view format, const std::vector<std::string>& values,
                    const Texts& texts) {
  if (values.size() < 2) return FillPlaceholders(format, values);
  const std::string tail = MakeTail(values.size());
  if (!format.ends_with(tail)) return FillPlaceholders(format, values);
  return RenderPieces(format.substr(0, format.size() - tail.size()), values, texts) +
         EndLabel(values[values.size() - 2]) + values.back();
}

}  // namespace

std::string RenderDescription(const Description& description, const Texts& texts) {
  if (description.formatted)
    return FillPlaceholders(texts.Resolve(description.format), description.params);
  std::vector<std::string> values;
  for (const std::string& reference : description.params)
    values.push_back(texts.Resolve(reference));
  return Compose(description.format, values, texts);
}

std::string RenderSentence(const Finding& finding, const Texts& texts) {
  const std::string* own = texts.FindText(AdviceSection(finding), "sentence");
  return own != nullptr ? *own : Sanitize(RenderDescription(finding.description, texts));
}

std::string JoinSentences(const std::string& first, const std::string& second) {
  if (first.ends_with("。")) return first + second;  // brings its own blank
  return first + (first.ends_with('.') ? " " : ": ") + second;
}

std::string AdviceSection(const Finding& finding) { return finding.id + "/" + finding.TextKey(); }

std::string FindAdvice(const Finding& finding, std::string_view key, const Texts& texts) {
  const std::string* text = texts.FindText(AdviceSection(finding), key);
  return text != nullptr ? *text : texts.FormatUi("unknown_finding");
}

}  // namespace host
