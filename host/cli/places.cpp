#include "host/cli/places.h"

#include <utility>

namespace host {

namespace fs = std::filesystem;

// /proc is not there in every jail; then only what PATH names is left, and the
// messages about missing files say where they were looked for.
Places::Places()
    : Places([] {
        std::error_code error;
        const fs::path self = fs::read_symlink("/proc/self/exe", error);
        return error ? fs::current_path() : self.parent_path();
      }()) {}

Places::Places(fs::path folder) {
  const bool buildTree = fs::exists(folder / "texts");
  if (buildTree) {
    libraries_ = {folder, folder / "../module", folder / "../platform/linux",
                  folder / "../platform/recorder", folder / "../platform/simulator"};
  }
  libraries_.push_back(folder / VELA_LIBRARIES_FROM_BIN);
  data_ = buildTree ? std::move(folder) : folder / VELA_DATA_FROM_BIN;
}

fs::path Places::Library(const std::string& file) const {
  for (const fs::path& folder : libraries_) {
    if (fs::exists(folder / file)) return (folder / file).lexically_normal();
  }
  return (libraries_.front() / file).lexically_normal();
}

}  // namespace host
