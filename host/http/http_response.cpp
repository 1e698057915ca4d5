#include "host/http/http_response.h"

#include <microhttpd.h>

#include <new>
#include <string>
#include <utility>

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

std::shared_ptr<MHD_Response> Owned(MHD_Response* response) {
  if (response == nullptr) throw std::bad_alloc();
  return {response, &MHD_destroy_response};
}

std::shared_ptr<MHD_Response> ResponseOwning(std::string&& text) {
  auto body = std::make_unique<std::string>(std::move(text));
  auto response = Owned(MHD_create_response_from_buffer_with_free_callback_cls(
      body->size(), body->data(), [](void* owner) { delete static_cast<std::string*>(owner); },
      body.get()));
  static_cast<void>(body.release());
  return response;
}

std::shared_ptr<MHD_Response> ResponseOver(const std::string& body) {
  auto* bytes = const_cast<char*>(body.data());  // the library only reads them
  return Owned(MHD_create_response_from_buffer(body.size(), bytes, MHD_RESPMEM_PERSISTENT));
}

}  // namespace

PreparedAnswer::PreparedAnswer(HttpAnswer&& answer)
    : status_(answer.status), response_(ResponseOwning(std::move(answer.body))) {
  AddHeaders(answer);
}

PreparedAnswer::PreparedAnswer(const HttpAnswer& answer)
    : status_(answer.status), response_(ResponseOver(answer.body)) {
  AddHeaders(answer);
}

void PreparedAnswer::AddHeaders(const HttpAnswer& answer) {
  MHD_add_response_header(response_.get(), "Content-Type", answer.contentType);
  for (const auto& [name, value] : kHeaders) MHD_add_response_header(response_.get(), name, value);
  for (const auto& [name, value] : answer.headers) {
    MHD_add_response_header(response_.get(), name, value.c_str());
  }
}

bool PreparedAnswer::SendTo(MHD_Connection* connection) const {
  return MHD_queue_response(connection, status_, response_.get()) == MHD_YES;
}

PreparedAnswer RepeatedAnswer::Prepared(HttpAnswer&& answer) {
  const std::lock_guard lock(mutex_);
  if (prepared_ && answer == last_) return *prepared_;
  last_ = answer;
  prepared_.emplace(std::move(answer));
  return *prepared_;
}

const PreparedAnswer& FixedAnswers::Prepared(const HttpAnswer& answer) {
  const auto known = prepared_.find(&answer);
  return known != prepared_.end()
             ? known->second
             : prepared_.emplace(&answer, PreparedAnswer(answer)).first->second;
}

}  // namespace host
