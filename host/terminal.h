// How an answer looks on standard output.
#pragma once

#include <string>
#include <string_view>

#include "host/verdict.h"

namespace vela::host {

// Colours and symbols on a terminal; neither when the output goes to a file or a pipe, or
// when NO_COLOR is set.
class Style {
 public:
  static Style ForStandardOutput();
  explicit Style(bool decorated) : decorated_(decorated) {}

  // "Warning" with symbol and colour of its severity.
  std::string Severity(Verdict verdict, std::string_view word) const;
  std::string Bold(std::string_view text) const { return Wrap("1", text); }
  std::string Faint(std::string_view text) const { return Wrap("2", text); }

 private:
  std::string Wrap(std::string_view code, std::string_view text) const;

  bool decorated_;
};

}  // namespace vela::host
