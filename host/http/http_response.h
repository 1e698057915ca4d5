// Answers as libmicrohttpd sends them, with the headers that all of them have.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "host/http/http.h"

struct MHD_Connection;
struct MHD_Response;

namespace host {

// Ready to be sent, to any number of connections.
class PreparedAnswer {
 public:
  // The body goes over to the server without a copy.
  explicit PreparedAnswer(HttpAnswer&& answer);
  // `answer` outlives it.
  explicit PreparedAnswer(const HttpAnswer& answer);

  // Within the connection's handler. False: the connection must be closed.
  bool SendTo(MHD_Connection* connection) const;

 private:
  void AddHeaders(const HttpAnswer& answer);

  unsigned status_;
  std::shared_ptr<MHD_Response> response_;
};

// Prepares an answer only when it is not the last one again: a document changes once a second at
// most, as long as the machine does not. For any thread.
class RepeatedAnswer {
 public:
  PreparedAnswer Prepared(HttpAnswer&& answer);

 private:
  std::mutex mutex_;
  HttpAnswer last_;
  std::optional<PreparedAnswer> prepared_;
};

// Answers that are always the same, prepared when first sent. For one thread at a time.
class FixedAnswers {
 public:
  // `answer` outlives this.
  const PreparedAnswer& Prepared(const HttpAnswer& answer);

 private:
  std::unordered_map<const HttpAnswer*, PreparedAnswer> prepared_;
};

}  // namespace host
