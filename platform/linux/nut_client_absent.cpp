#include "platform/linux/nut_client.h"

namespace vela::linuxplatform {

NutAnswer AskUpsStatus(const UpsAddress&, std::chrono::steady_clock::time_point, std::string&,
                       std::string& reason) {
  reason = "this platform was built without NUT's client library";
  return NutAnswer::Unsupported;
}

}  // namespace vela::linuxplatform
