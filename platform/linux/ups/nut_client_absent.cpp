#include "platform/linux/ups/nut_client.h"

namespace linux_platform {

NutAnswer ReadUpsStatus(const UpsAddress&, std::chrono::steady_clock::time_point, std::string&,
                        std::string& reason) {
  reason = "this platform was built without NUT's client library";
  return NutAnswer::Unsupported;
}

}  // namespace linux_platform
