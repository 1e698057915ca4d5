// The head of a request, held against what the library made of it. The library is lenient: it
// goes on with what other servers on the way may have read otherwise.
#pragma once

#include <string_view>

struct MHD_Connection;

namespace host {

// As the library hands them out: pointers into the head.
struct RequestLine {
  const char* method;
  const char* target;   // decoded, without the query string
  const char* version;  // "HTTP/1.1"
};

// "http://nas:8480/page" is the page of that host; "/page" names none.
struct Target {
  std::string_view host;  // empty: none named
  const char* path;
};
Target SplitTarget(const char* target);

// Before the library takes the target apart and decodes it.
class RawTarget {
 public:
  explicit RawTarget(const char* text);
  // Without blanks and control characters, and followed by the version at once.
  bool IsBefore(const char* version) const;

 private:
  const char* end_;
  bool plain_;
};

// False for a head with blanks before a colon, control characters, lines that are folded or do
// not end with CR LF, or a length that is told twice.
bool IsWellFormed(MHD_Connection* connection, const RequestLine& line, const RawTarget& target);

}  // namespace host
