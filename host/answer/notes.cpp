#include "host/answer/notes.h"

#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

// "new_key (eth0, 3, 4)".
std::string NameNote(const VELANote& note) {
  std::string words = std::string(note.key) + " (";
  if (note.part[0] != '\0') words += std::string(note.part) + ", ";
  words += FormatFigure(note.figure);
  if (note.mark != 0) words += ", " + FormatFigure(note.mark);
  return words + ")";
}

}  // namespace

std::string FormatNote(const VELANote& note, const Texts& texts) {
  const std::string* text = texts.FindCounted("notes", note.key, note.figure);
  if (text == nullptr) return Sanitize(NameNote(note));
  return Sanitize(FillNames(*text, {{"part", note.part},
                                    {"figure", FormatFigure(note.figure)},
                                    {"mark", FormatFigure(note.mark)}}));
}

std::vector<ToldLine> FormatNotes(const Notes& notes, const Texts& texts) {
  std::vector<ToldLine> lines;
  for (const VELANote& note : notes)
    lines.push_back({texts.FormatUi("note", FormatNote(note, texts)), Sanitize(note.command)});
  return lines;
}

}  // namespace host
