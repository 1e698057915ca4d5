// The folders that others get at: by NFS, by SMB, or as LUNs in files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace linux_platform {

class Exports {
 public:
  // Whether something at or below `folder` is named in one of their tables: exports, smb.conf, the
  // iSCSI target's saved configuration. They are read at the first question.
  bool Contain(std::string_view folder);

 private:
  std::optional<std::string> tables_;  // none: not read yet
};

}  // namespace linux_platform
