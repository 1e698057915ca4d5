#include "host/http/http_response.h"

#include <microhttpd.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "host/http/gzip.h"

namespace host {
namespace {

constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src data:; "
     "frame-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'self'"},
};

std::shared_ptr<MHD_Response> CreateResponse(std::string&& text, const char* contentType,
                                             const HttpAnswer& answer) {
  auto body = std::make_unique<std::string>(std::move(text));
  MHD_Response* response = MHD_create_response_from_buffer_with_free_callback_cls(
      body->size(), body->data(), [](void* owner) { delete static_cast<std::string*>(owner); },
      body.get());
  if (response == nullptr) throw std::bad_alloc();
  static_cast<void>(body.release());  // the response's from now on
  MHD_add_response_header(response, "Content-Type", contentType);
  for (const auto& [name, value] : kHeaders) MHD_add_response_header(response, name, value);
  for (const auto& [name, value] : answer.headers)
    MHD_add_response_header(response, name, value.c_str());
  return {response, &MHD_destroy_response};
}

const char* FindHeader(MHD_Connection* connection, const char* name) {
  return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

// Browsers name HTML when they follow a link; programs, and a page's own scripts, do not.
bool WantsPage(MHD_Connection* connection) {
  const char* accepted = FindHeader(connection, "Accept");
  return accepted != nullptr && std::strstr(accepted, "text/html") != nullptr;
}

}  // namespace

PreparedAnswer::PreparedAnswer(HttpAnswer answer) : status_(answer.status) {
  if (answer.packs) {
    answer.headers.emplace_back("Vary", "Accept-Encoding");
    packed_ = CreateResponse(Gzip(answer.body), answer.contentType, answer);
    MHD_add_response_header(packed_.get(), "Content-Encoding", "gzip");
  }
  response_ = CreateResponse(std::move(answer.body), answer.contentType, answer);
  if (!answer.page.empty())
    page_ = CreateResponse(std::move(answer.page), "text/html; charset=utf-8", answer);
}

bool PreparedAnswer::SendTo(MHD_Connection* connection) const {
  const bool page = page_ != nullptr && WantsPage(connection);
  const bool packed = packed_ != nullptr && AcceptsGzip(FindHeader(connection, "Accept-Encoding"));
  const auto& response = page ? page_ : packed ? packed_ : response_;
  return MHD_queue_response(connection, status_, response.get()) == MHD_YES;
}

}  // namespace host
