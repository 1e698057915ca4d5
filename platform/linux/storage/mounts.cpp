#include "platform/linux/storage/mounts.h"

#include <libmount.h>
#include <stdio.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/linux/base/memo.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

using Table = std::unique_ptr<libmnt_table, void (*)(libmnt_table*)>;
using Iterator = std::unique_ptr<libmnt_iter, void (*)(libmnt_iter*)>;

constexpr std::size_t kTableCap = std::size_t{16} << 20;

std::string Text(const char* text) { return text != nullptr ? text : ""; }

// Parses a table without looking at anything but its text.
template <typename Visit>
void ForEachEntry(const std::string& text, const Visit& visit) {
  if (text.empty()) return;  // fmemopen refuses it
  const Table table(mnt_new_table(), mnt_unref_table);
  const Iterator iterator(mnt_new_iter(MNT_ITER_FORWARD), mnt_free_iter);
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(
      fmemopen(const_cast<char*>(text.data()), text.size(), "r"), fclose);
  if (!table || !iterator || !stream) throw std::bad_alloc();
  mnt_table_parse_stream(table.get(), stream.get(), "/");  // it would look up a real name
  libmnt_fs* entry = nullptr;
  while (mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0) visit(entry);
}

}  // namespace

std::vector<Mount> ParseMountInfo(const std::string& text) {
  std::vector<Mount> mounts;
  ForEachEntry(text, [&mounts](libmnt_fs* entry) {
    if (mnt_fs_get_target(entry) == nullptr || mnt_fs_get_id(entry) == 0) return;
    Mount& mount = mounts.emplace_back();
    mount.id = mnt_fs_get_id(entry);
    mount.parent = mnt_fs_get_parent_id(entry);
    mount.device = mnt_fs_get_devno(entry);
    mount.root = Text(mnt_fs_get_root(entry));
    mount.target = Text(mnt_fs_get_target(entry));
    mount.options = Text(mnt_fs_get_vfs_options(entry));
    mount.superOptions = Text(mnt_fs_get_fs_options(entry));
    mount.type = Text(mnt_fs_get_fstype(entry));
    mount.source = Text(mnt_fs_get_source(entry));
  });
  return mounts;
}

bool ReadMounts(MountTable& mounts) {
  static Memo<std::vector<Mount>> memo;
  std::string text;
  const auto result = ReadSmallFile(BelowRoot("/proc/self/mountinfo").c_str(), kTableCap, text);
  const int error = errno;
  mounts = memo.Of(text, ParseMountInfo);
  errno = error;
  return result == ReadResult::Read;
}

const Mount* FindMount(const std::vector<Mount>& mounts, std::string_view target) {
  const auto last = std::find_if(mounts.rbegin(), mounts.rend(),
                                 [target](const Mount& mount) { return mount.target == target; });
  return last == mounts.rend() ? nullptr : &*last;
}

bool MayHang(std::string_view type) {
  constexpr std::string_view kRemote[] = {"autofs", "nfs",  "nfs4",      "cifs",     "smb3",
                                          "smbfs",  "9p",   "afs",       "ceph",     "lustre",
                                          "ocfs2",  "gfs2", "glusterfs", "ncpfs",    "coda",
                                          "beegfs", "gpfs", "pvfs2",     "virtiofs", "sshfs"};
  return type.starts_with("fuse") || std::ranges::find(kRemote, type) != std::end(kRemote);
}

const Mount* FindHangingParent(const std::vector<Mount>& mounts, const Mount& mount) {
  const Mount* each = &mount;
  // The table may be torn: no more steps than it has rows.
  for (std::size_t step = 0; step < mounts.size(); ++step) {
    const auto above = std::ranges::find(mounts, each->parent, &Mount::id);
    if (above == mounts.end() || &*above == each) return nullptr;
    if (MayHang(above->type)) return &*above;
    each = &*above;
  }
  return nullptr;
}

bool IsOwnMount(const Mount& mount) {
  return mount.root == "/" ||
         (mount.type == "btrfs" && HasWord(mount.superOptions, "subvol=" + mount.root));
}

std::vector<std::string> ParseFstabTargets(const std::string& text) {
  std::vector<std::string> targets;
  ForEachEntry(text, [&targets](libmnt_fs* entry) {
    if (mnt_fs_get_target(entry) != nullptr) targets.emplace_back(mnt_fs_get_target(entry));
  });
  return targets;
}

std::vector<std::string> ParseSwaps(const std::string& text) {
  std::vector<std::string> areas;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string line = text.substr(begin, end - begin);
    begin = end + 1;
    if (line.starts_with('/')) areas.push_back(line.substr(0, line.find_first_of(" \t")));
  }
  return areas;
}

}  // namespace linux_platform
