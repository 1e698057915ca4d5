#include "common/json_lists.h"

#include <vector>

#include "common/json_marks.h"

namespace common {
namespace {

constexpr std::size_t kMostAtOnce = 100'000;  // values

// Some elements of a list: what stands between two marks, a bracket or a comma each.
struct Piece {
  std::size_t begin, end;  // the marks' places in the text
  std::size_t list;        // its number
};

struct SplitDocument {
  std::string outline;  // {"luns": [0], "volumes": [1]}: numbers in place of the lists' elements
  std::vector<Piece> pieces;
  std::size_t lists = 0, elements = 0, values = 0;
};

class Splitter {
 public:
  Splitter(std::string_view text, std::size_t pieceLength)
      : text_(text), pieceLength_(pieceLength) {}

  SplitDocument Split() {
    char root = '\0';
    for (JsonMarks marks(text_); marks.Next();) {
      if (root == '\0') root = marks.Mark();
      if (!marks.Closes()) ++split_.values;
      if (inList_)
        WalkList(marks);
      else if (root == '{' && marks.Mark() == '[' && marks.Depth() == 2)
        BeginList(marks.Place());
    }
    split_.outline += text_.substr(outlined_);
    return std::move(split_);
  }

 private:
  void BeginList(std::size_t place) {
    split_.outline += text_.substr(outlined_, place + 1 - outlined_);
    inList_ = true;
    outlined_ = place + 1;
    pieceBegin_ = place;
  }

  void WalkList(const JsonMarks& marks) {
    const bool ends = marks.Depth() == 1;
    if (!ends && (marks.Depth() > 2 || marks.Mark() != ',')) return;
    if (ends && IsEmptyTo(marks.Place())) return EndList(marks.Place());
    ++split_.elements;
    if (!ends && marks.Place() - pieceBegin_ < pieceLength_) return;
    split_.pieces.push_back({pieceBegin_, marks.Place(), split_.lists});
    pieceBegin_ = marks.Place();
    if (!ends) return;
    split_.outline += std::to_string(split_.lists++);
    EndList(marks.Place());
  }

  // Whether the list that ends there has nothing in it but blanks.
  bool IsEmptyTo(std::size_t end) const {
    return text_.substr(outlined_, end - outlined_).find_first_not_of(" \t\r\n") == text_.npos;
  }

  void EndList(std::size_t place) {
    inList_ = false;
    outlined_ = place;
  }

  std::string_view text_;
  std::size_t pieceLength_;
  SplitDocument split_;
  bool inList_ = false;
  std::size_t outlined_ = 0;    // so much of the text is in the outline, or in a list
  std::size_t pieceBegin_ = 0;  // the mark before the list's next piece
};

// Puts down the lists' names by number, and takes the numbers out of the outline. Of a name that
// is there twice the later list counts. False: a bracket was out of place, as the parser
// allows behind a comment.
bool TakeNames(Json::Value& outline, std::vector<std::string_view>& names) {
  if (!outline.isObject()) return true;
  for (auto member = outline.begin(); member != outline.end(); ++member) {
    if (!member->isArray() || member->empty()) continue;
    const Json::Value& number = (*member)[0];
    if (!number.isUInt() || number.asUInt() >= names.size()) return false;
    names[number.asUInt()] = MemberName(member);
    member->clear();
  }
  return true;
}

}  // namespace

Parsed ParseJsonLists(std::string text, Json::Value& value, const TakeElement& take,
                      std::size_t pieceLength) {
  const SplitDocument split = Splitter(text, pieceLength).Split();
  if (split.elements > kMostElements || split.values > kMostListedValues) return Parsed::TooLarge;
  Json::Value outline;
  Parsed parsed = TryParseJson(split.outline, outline, kMostAtOnce);
  if (parsed != Parsed::Whole) return parsed;
  std::vector<std::string_view> names(split.lists);
  if (!TakeNames(outline, names)) return Parsed::Invalid;
  for (const Piece& piece : split.pieces) {
    text[piece.begin] = '[';
    text[piece.end] = ']';
    const std::string_view part = std::string_view(text).substr(piece.begin);
    Json::Value elements;
    parsed = TryParseJson(part.substr(0, piece.end + 1 - piece.begin), elements, kMostAtOnce);
    if (parsed != Parsed::Whole) return parsed;
    if (elements.empty()) return Parsed::Invalid;  // nothing behind a comma
    if (names[piece.list].data() == nullptr) continue;
    for (const Json::Value& element : elements) take(names[piece.list], element);
  }
  value.swap(outline);
  return Parsed::Whole;
}

}  // namespace common
