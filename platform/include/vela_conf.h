// The appliance's configuration reader.
#pragma once

#pragma GCC visibility push(default)

// Two sources of key/value pairs: the current settings (`Info...`) and the factory
// defaults (`Def...`). Returned texts stay valid while the reader lives and are
// never null when a default is given.
class VelaConf {
 public:
  VelaConf();
  ~VelaConf();
  VelaConf(const VelaConf&) = delete;
  VelaConf& operator=(const VelaConf&) = delete;

  const char* Info(const char* key, const char* defaultValue) const;
  const char* Def(const char* key, const char* defaultValue) const;
  // Whether `key` is present and holds exactly `value`.
  bool InfoCheckValue(const char* key, const char* value, bool flag) const;
  bool DefCheckValue(const char* key, const char* value, bool flag) const;

 private:
  [[maybe_unused]] void* sources_;
};
static_assert(sizeof(VelaConf) == 8);

#pragma GCC visibility pop
