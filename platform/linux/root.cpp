#include "platform/linux/root.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/linux/descriptor.h"

namespace vela::linuxplatform {
namespace {

std::string& Root() {
  static std::string root = [] {
    const char* named = secure_getenv("VELA_ROOT");
    return std::string(named != nullptr ? named : "");
  }();
  return root;
}

}  // namespace

std::string BelowRoot(std::string_view path) {
  std::string below = Root();
  return below.append(path);
}

void SetRoot(std::string_view root) { Root() = root; }

ReadResult ReadSmallFile(const char* path, std::size_t cap, std::string& text) {
  text.clear();
  const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) return errno == ENOENT || errno == ENOTDIR ? ReadResult::Missing : ReadResult::Failed;

  // One byte more than the cap tells a file that fits exactly from one that does not.
  std::size_t filled = 0;
  text.resize(cap < 4096 ? cap + 1 : 4096);
  for (;;) {
    const ssize_t got = read(file.Get(), text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return text.clear(), ReadResult::Failed;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled > cap) return text.resize(cap), ReadResult::TooLarge;
    if (filled == text.size()) text.resize(filled * 2 > cap ? cap + 1 : filled * 2);
  }
  text.resize(filled);
  return ReadResult::Read;
}

}  // namespace vela::linuxplatform
