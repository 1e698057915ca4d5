// Where /etc, /proc, /run and /var are looked for, and small files read from there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/linux/base/trouble.h"

namespace linux_platform {

// The texts one after the other, in one allocation, where a + b + c takes one more for each
// that the text outgrows.
template <typename... Parts>
std::string Concatenate(const Parts&... parts) {
  std::string text;
  text.reserve((std::string_view(parts).size() + ...));
  (text.append(std::string_view(parts)), ...);
  return text;
}

// Empty, unless the environment variable VELA_ROOT named a folder when the platform was
// first asked.
const std::string& Root();
// The path that the parts make up, below that root. /sys is never below it: the libraries
// that read devices know only the real one.
template <typename... Parts>
std::string BelowRoot(const Parts&... parts) {
  return Concatenate(Root(), parts...);
}

// Replaces the root; "" and "/" are the real one. Not while another thread asks. `isTrusted`:
// the tree is the caller's own.
void SetRoot(std::string_view root, bool isTrusted);
// Whether it was said, here or by VELA_ROOT_TRUST=yes in the environment, that the tree below the
// root is the caller's own: then its links and devices are followed and its programs run.
bool TrustsRoot();

// Whether `program`, a whole path, may be started. Root starts none below another root: a tree
// is files, and whoever made it would else act as root. `reason` says so.
bool MayStart(std::string_view program, std::string& reason);

enum class ReadResult { Read, Missing, Failed, TooLarge };

// Replaces `text` by the file's content, at most `cap` bytes. Missing: no such file.
// Failed: errno says why. TooLarge: `text` holds the first `cap` bytes.
// Waits for no FIFO. `path` is taken as it is.
ReadResult ReadSmallFile(const char* path, std::size_t cap, std::string& text);
// Whether a file is Missing, or looking for it has Failed, by the `error` of that.
ReadResult ToReadResult(int error);
// The trouble with the table at `path`, which says what ought to be there, after that `result` and
// with its errno; none where it was read or is Missing.
Trouble MissTable(const std::string& path, ReadResult result);

}  // namespace linux_platform
