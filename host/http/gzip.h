// The gzip encoding of HTTP bodies (RFC 1952).
#pragma once

#include <string>
#include <string_view>

namespace host {

// As small as it gets; throws std::bad_alloc.
std::string Gzip(std::string_view bytes);

// Whether an Accept-Encoding names gzip and does not refuse it with "q=0"; null: none was sent.
bool AcceptsGzip(const char* acceptEncoding);

}  // namespace host
