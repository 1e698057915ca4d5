#include "platform/linux/ups/nut_client.h"

namespace linux_platform {

NutAnswer ReadUpses(const NutServer&, std::chrono::steady_clock::time_point,
                    std::vector<UpsReading>&, std::string& reason) {
  reason = "this platform was built without NUT's client library";
  return NutAnswer::Unsupported;
}

NutAnswer DescribeUpses(const NutServer&, std::chrono::steady_clock::time_point,
                        const std::vector<HeardUps*>&, std::string&) {
  return NutAnswer::Unsupported;
}

}  // namespace linux_platform
