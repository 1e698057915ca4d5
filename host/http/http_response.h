// Answers as libmicrohttpd sends them, with the headers that all of them have.
#pragma once

#include <memory>

#include "host/http/http.h"

struct MHD_Connection;
struct MHD_Response;

namespace host {

// Ready to be sent, to any number of connections and by any thread.
class PreparedAnswer {
 public:
  // Throws std::bad_alloc.
  explicit PreparedAnswer(HttpAnswer answer);

  // Within the connection's handler. False: the connection must be closed.
  bool SendTo(MHD_Connection* connection) const;

 private:
  unsigned status_;
  std::shared_ptr<MHD_Response> response_;
  std::shared_ptr<MHD_Response> page_;    // null: everybody gets the response
  std::shared_ptr<MHD_Response> packed_;  // the response for who can unpack it; null as well
};

}  // namespace host
