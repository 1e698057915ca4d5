#include "platform/linux/base/root.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {
namespace {

std::string& TheRoot() {
  static std::string root = [] {
    const char* named = secure_getenv("VELA_ROOT");
    return std::string(named != nullptr ? named : "");
  }();
  return root;
}

}  // namespace

const std::string& Root() { return TheRoot(); }

void SetRoot(std::string_view root) { TheRoot() = root; }

ReadResult ReadSmallFile(const char* path, std::size_t cap, std::string& text) {
  text.clear();
  const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) return errno == ENOENT || errno == ENOTDIR ? ReadResult::Missing : ReadResult::Failed;

  std::array<char, std::size_t{16} << 10>
      part;  // left as it is: filling it costs more than most reads
  for (;;) {
    const ssize_t got = read(file.Get(), part.data(), part.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      text.clear();
      return ReadResult::Failed;
    }
    if (got == 0) break;
    text.append(part.data(), static_cast<std::size_t>(got));
    if (text.size() > cap) {
      text.resize(cap);
      return ReadResult::TooLarge;
    }
  }
  return ReadResult::Read;
}

}  // namespace linux_platform
