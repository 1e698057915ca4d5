// What shapes a document, seen before it is parsed: the parser recurses once a level, and takes up
// to 200 bytes for a value of two.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace common {

// The levels of brackets that are followed. The parser takes 520 bytes of stack for each, so half
// of a thread's 256 KiB.
constexpr std::size_t kDeepestJson = 256;

// Walks from mark to mark: the brackets of lists and objects, and the commas between values. What
// stands in texts and comments is none, nor what follows the document's end, or a bracket that is
// one too deep. A bracket that closes nothing is passed over: behind a comment the parser
// overlooks it, too.
class JsonMarks {
 public:
  explicit JsonMarks(std::string_view document) : document_(document) {}

  bool Next();  // false: there are no more
  std::size_t Place() const { return place_; }
  char Mark() const { return document_[place_]; }
  std::size_t Depth() const { return open_.size(); }  // behind the mark: 1 in the outermost
  bool Opens() const { return Mark() == '[' || Mark() == '{'; }
  bool Closes() const { return Mark() == ']' || Mark() == '}'; }

 private:
  bool TakeBracket();

  std::string_view document_;
  std::size_t place_ = 0, next_ = 0;
  std::string open_;  // the closing bracket of each level
};

struct JsonShape {
  std::size_t depth = 0;   // of the innermost brackets; one more than are followed at most
  std::size_t values = 1;  // as many as the parser makes of it, or a few more
};
JsonShape MeasureJson(std::string_view document);

// How much of a text that begins with a quotation mark is quoted.
std::size_t GetQuotedLength(std::string_view text);
// How much of a text that begins with a slash is a comment; 1 when there is none.
std::size_t GetCommentLength(std::string_view text);

}  // namespace common
