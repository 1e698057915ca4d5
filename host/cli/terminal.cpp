#include "host/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace host {
namespace {

constexpr std::size_t kIndent = 2;  // of what is told beside the answer

struct Mark {
  const char* symbol;
  const char* code;
};

Mark ChooseMark(Verdict verdict) {
  switch (verdict) {
    case Verdict::Danger:
      return {"✖ ", "1;31"};
    case Verdict::Warning:
      return {"▲ ", "1;33"};
    case Verdict::Notice:
      return {"◆ ", "1;36"};
    case Verdict::Well:
      return {"● ", "1;32"};
    case Verdict::Unknown:
      break;
  }
  return {"? ", "1"};  // the terminal's greys are unreadable on one background or the other
}

// How many columns a character takes that begins with `first`: three bytes and more are those
// of East Asia for the most part. Too wide breaks a line early, which is no harm.
std::size_t MeasureWidth(unsigned char first) {
  if ((first & 0xC0U) == 0x80U) return 0;  // goes on
  return first >= 0xE3U && first <= 0xEFU ? 2 : 1;
}

std::size_t MeasureWidth(std::string_view text) {
  std::size_t width = 0;
  for (const char c : text) width += MeasureWidth(static_cast<unsigned char>(c));
  return width;
}

// Marks of East Asia that end what stands before them, and those that begin what follows.
constexpr std::string_view kClosing = "、。，：；！？）」ー";
constexpr std::string_view kOpening = "（「";

bool IsMark(std::string_view marks, std::string_view text) {
  return text.size() == 3 && marks.find(text) != std::string_view::npos;
}

// Where what must stay on one line ends: at a blank, or behind a character of East Asia, whose
// words have none between them.
std::size_t FindBreak(std::string_view text, std::size_t at) {
  std::string_view before;
  while (at < text.size() && text[at] != ' ') {
    std::size_t end = at + 1;
    while (end < text.size() && MeasureWidth(static_cast<unsigned char>(text[end])) == 0) ++end;
    const std::string_view character = text.substr(at, end - at);
    const bool parts = MeasureWidth(before) == 2 && !IsMark(kOpening, before);
    if (parts && !IsMark(kClosing, character)) break;
    before = character;
    at = end;
  }
  return at;
}

std::size_t ReadTerminalColumns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

Style Style::ForStandardOutput() {
  const char* terminal = std::getenv("TERM");
  const bool dumb = terminal == nullptr || std::string_view(terminal) == "dumb";
  return Style(isatty(STDOUT_FILENO) != 0 && !dumb && !IsSet("NO_COLOR"), ReadTerminalColumns());
}

std::string Style::Severity(Verdict verdict, std::string_view word) const {
  if (!decorated_) return std::string(word);
  const Mark mark = ChooseMark(verdict);
  return Decorate(mark.code, std::string(mark.symbol).append(word));
}

std::string Style::Headline(Verdict verdict, const std::string& word, const std::string& colon,
                            const std::string& sentence) const {
  const std::string label = decorated_ ? ChooseMark(verdict).symbol + word : word;
  const std::string lines = WrapLines(0, "", label + colon + sentence);
  const std::size_t start = label.size() + colon.size();
  // The colon's blank may have become the line's end.
  return Severity(verdict, word) + lines.substr(label.size(), colon.size()) +
         Bold(lines.substr(start));
}

std::string Style::Cause(const std::string& label, const ToldCause& cause) const {
  std::string lines;
  for (const std::string& line : cause.lines)
    lines +=
        WrapLines(lines.empty() ? kIndent : 2 * kIndent, "", lines.empty() ? label + line : line) +
        "\n";
  return lines + Command(cause.show);
}

std::string Style::Further(Verdict verdict, const std::string& word, const std::string& colon,
                           const std::string& sentence) const {
  const std::string label = decorated_ ? ChooseMark(verdict).symbol + word : word;
  const std::string lines = WrapLines(kIndent, "", label + colon + sentence);
  return lines.substr(0, kIndent) + Severity(verdict, word) + lines.substr(kIndent + label.size()) +
         "\n";
}

std::string Style::Command(const std::string& command) const {
  return command.empty() ? "" : std::string(7, ' ') + Decorate("36", command) + "\n";
}

std::string Style::Source(const ToldLine& line) const {
  return WrapLines(kIndent, "", line.text) + "\n" + Command(line.command);
}

std::string Style::Note(const ToldLine& line) const {
  const std::string whole = line.text + (line.command.empty() ? "" : " · ") + line.command;
  const bool fits = columns_ == 0 || kIndent + MeasureWidth(whole) <= columns_;
  return fits ? WrapLines(kIndent, "", whole) + "\n" : Source(line);
}

std::string Style::WrapLines(std::size_t indent, std::string_view mark,
                             std::string_view text) const {
  const std::size_t margin = indent + MeasureWidth(mark);
  std::string lines = std::string(indent, ' ').append(mark);
  std::size_t column = margin;
  std::size_t gap = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = FindBreak(text, at);
    const std::string_view word = text.substr(at, end - at);
    const bool first = column == margin;
    if (!first && columns_ > 0 && column + gap + MeasureWidth(word) > columns_) {
      lines.append("\n").append(margin, ' ');
      column = margin;
    } else if (!first) {
      lines.append(gap, ' ');
      column += gap;
    }
    lines += word;
    column += MeasureWidth(word);
    gap = end < text.size() && text[end] == ' ' ? 1 : 0;
    at = end + gap;
  }
  return lines;
}

std::string Style::Decorate(std::string_view code, std::string_view text) const {
  if (!decorated_) return std::string(text);
  return std::string("\033[").append(code).append("m").append(text).append("\033[0m");
}

}  // namespace host
