#include "host/http/request_head.h"

#include <microhttpd.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace host {
namespace {

constexpr std::size_t kLineEnd = 2;  // CR and LF

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

bool IsTokenCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return std::isalnum(byte) != 0 || (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

bool IsToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsTokenCharacter);
}

bool IsFieldValue(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return IsControl(c) && c != '\t'; });
}

// Version 0.9.75 parses a head where it was received. So each header begins where the line before
// it ends, unless something got lost: what follows a NUL, or a folded line. A later version says
// so by itself.
bool ParsesInPlace() { return std::strcmp(MHD_get_version(), "0.9.75") == 0; }

struct Head {
  const char* next;  // where the next header begins
  bool inPlace = ParsesInPlace();
  bool wellFormed = true;
  int lengths = 0;
};

MHD_Result ReadHeader(void* cls, MHD_ValueKind, const char* name, std::size_t nameSize,
                      const char* value, std::size_t valueSize) {
  auto& head = *static_cast<Head*>(cls);
  if (strcasecmp(name, MHD_HTTP_HEADER_CONTENT_LENGTH) == 0 ||
      strcasecmp(name, MHD_HTTP_HEADER_TRANSFER_ENCODING) == 0) {
    ++head.lengths;
  }
  const bool placed = !head.inPlace || (name == head.next && value > name + nameSize);
  head.wellFormed =
      placed && head.lengths <= 1 && IsToken({name, nameSize}) && IsFieldValue({value, valueSize});
  head.next = value + valueSize + kLineEnd;
  return head.wellFormed ? MHD_YES : MHD_NO;
}

std::size_t GetHeadSize(MHD_Connection* connection) {
  return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE)->header_size;
}

}  // namespace

Target SplitTarget(const char* target) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (strncasecmp(target, scheme.data(), scheme.size()) != 0) continue;
    const char* host = target + scheme.size();
    const std::size_t size = std::strcspn(host, "/");
    if (size > 0) return {{host, size}, host[size] == '\0' ? "/" : host + size};
  }
  return {{}, target};
}

RawTarget::RawTarget(const char* text) : end_(text + std::strlen(text)) {
  plain_ = std::none_of(text, end_, [](char c) { return IsControl(c) || c == ' '; });
}

bool RawTarget::IsBefore(const char* version) const { return plain_ && version == end_ + 1; }

bool IsWellFormed(MHD_Connection* connection, const RequestLine& line, const RawTarget& target) {
  Head head{line.version + std::strlen(line.version) + kLineEnd};
  MHD_get_connection_values_n(connection, MHD_HEADER_KIND, &ReadHeader, &head);
  if (!head.wellFormed || !target.IsBefore(line.version)) return false;
  return !head.inPlace || head.next + kLineEnd == line.method + GetHeadSize(connection);
}

}  // namespace host
