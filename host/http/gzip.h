// Answers in the one packed form that every client can unpack.
#pragma once

#include <string>

namespace host {

// As small as it gets. Throws std::bad_alloc.
std::string Gzip(const std::string& bytes);

// Whether an Accept-Encoding names gzip and does not refuse it with "q=0"; null: none was sent.
bool AcceptsGzip(const char* acceptEncoding);

}  // namespace host
