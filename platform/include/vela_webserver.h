// The appliance's web-server configuration manager.
#pragma once

#pragma GCC visibility push(default)

namespace velaw3 {

enum NGINXCONF_OPERATOR : int { NGINXCONF_APPLY = 7 };

class NginxConfManager {
 public:
  explicit NginxConfManager(NGINXCONF_OPERATOR operation);
  ~NginxConfManager();
  NginxConfManager(const NginxConfManager&) = delete;
  NginxConfManager& operator=(const NginxConfManager&) = delete;

  bool run();  // true when the configuration is in force

 private:
  [[maybe_unused]] void* state_;
};
static_assert(sizeof(NginxConfManager) == 8);

}  // namespace velaw3

#pragma GCC visibility pop
