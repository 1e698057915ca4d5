#include "platform/linux/base/root.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/linux/base/open.h"

namespace linux_platform {
namespace {

// "/" is the machine itself.
std::string WithoutLastSlash(std::string_view root) {
  return std::string(root.substr(0, root.find_last_not_of('/') + 1));
}

std::string ReadVariable(const char* name) {
  const char* value = secure_getenv(name);
  return value != nullptr ? value : "";
}

struct RootInForce {
  std::string path;
  bool isTrusted;
};

RootInForce& TheRoot() {
  static RootInForce root = {WithoutLastSlash(ReadVariable("VELA_ROOT")),
                             ReadVariable("VELA_ROOT_TRUST") == "yes"};
  return root;
}

}  // namespace

const std::string& Root() { return TheRoot().path; }

bool TrustsRoot() { return TheRoot().isTrusted; }

void SetRoot(std::string_view root, bool isTrusted) {
  TheRoot() = {WithoutLastSlash(root), isTrusted};
}

bool MayStart(std::string_view program, std::string& reason) {
  if (Root().empty() || TrustsRoot() || geteuid() != 0 || !program.starts_with(Root() + "/"))
    return true;
  reason = std::string(program) + " was not started: root starts no program of another root";
  return false;
}

ReadResult ToReadResult(int error) {
  return error == ENOENT || error == ENOTDIR ? ReadResult::Missing : ReadResult::Failed;
}

ReadResult ReadSmallFile(const char* path, std::size_t cap, std::string& text) {
  text.clear();
  const Descriptor file = Open(path, O_RDONLY);
  if (!file) return ToReadResult(errno);

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

Trouble MissTable(const std::string& path, ReadResult result) {
  if (result == ReadResult::Read || result == ReadResult::Missing) return {};
  const std::string why = result == ReadResult::TooLarge ? "it is too large" : std::strerror(errno);
  return {"nobody looks for what " + path + " names, which could not be read: " + why,
          "chmod a+r " + path};
}

}  // namespace linux_platform
