// How an answer looks on standard output.
#pragma once

#include <string>
#include <string_view>

#include "host/answer/evidence.h"
#include "host/answer/sources.h"
#include "host/answer/verdict.h"

namespace host {

// Colours and symbols on a terminal; neither when the output goes to a file or a pipe, or
// when NO_COLOR is set.
class Style {
 public:
  static Style ForStandardOutput();
  // `columns`: where to break lines; 0: nowhere.
  explicit Style(bool decorated, std::size_t columns = 0)
      : decorated_(decorated), columns_(columns) {}

  // "Warning" with symbol and colour of its severity.
  std::string Severity(Verdict verdict, std::string_view word) const;
  // "Warning: The storage needs attention.", broken where the terminal ends. `colon` brings the
  // blank that the language has after it.
  std::string Headline(Verdict verdict, const std::string& word, const std::string& colon,
                       const std::string& sentence) const;
  std::string Bold(std::string_view text) const { return Decorate("1", text); }
  std::string Faint(std::string_view text) const { return Decorate("2", text); }
  // What a source has to tell, and indented below it what to do about it.
  std::string Source(const ToldLine& line) const;
  // Why something is not well, behind `label`, and the command that shows it.
  std::string Cause(const std::string& label, const ToldCause& cause) const;
  // A finding that lost, like a headline and less loud.
  std::string Further(Verdict verdict, const std::string& word, const std::string& colon,
                      const std::string& sentence) const;
  // A command to type, in a line of its own, which nothing breaks: half of it may be another one.
  std::string Command(const std::string& command) const;
  // A note, and its command behind it where both fit on one line.
  std::string Note(const ToldLine& line) const;
  // `mark` and `text` behind `indent` blanks; what does not fit on a line of the terminal goes
  // on below the text.
  std::string WrapLines(std::size_t indent, std::string_view mark, std::string_view text) const;

 private:
  std::string Decorate(std::string_view code, std::string_view text) const;

  bool decorated_;
  std::size_t columns_;
};

}  // namespace host
