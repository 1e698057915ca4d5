#include "platform/linux/storage/mounts.h"

#include <libmount.h>
#include <stdio.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/linux/base/file_memo.h"
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

// A disk's name or mark. Not: drives of media, and devices that a network or a file is behind.
bool NamesDisk(std::string_view source) {
  constexpr std::string_view kTags[] = {"UUID=", "LABEL=", "PARTUUID=", "PARTLABEL=", "ID="};
  constexpr std::string_view kOthers[] = {"sr",  "cdrom", "cdrw", "dvd",  "dvdrw", "fd",  "loop",
                                          "shm", "ram",   "zram", "fuse", "nbd",   "rbd", "drbd"};
  const auto begins = [&source](std::string_view word) { return source.starts_with(word); };
  if (std::ranges::any_of(kTags, begins)) return true;
  if (!begins("/dev/")) return false;
  source.remove_prefix(5);
  // "sr0" and "drbd/by-res/a"; "srv/data" is a volume of the group "srv".
  const std::string_view name = source.substr(0, source.find_first_of("/0123456789"));
  return std::ranges::find(kOthers, name) == std::end(kOthers);
}

// "/" is what the machine runs from: it is there.
bool OughtToBeMounted(const FstabLine& line) {
  constexpr const char* kOtherwise[] = {
      "noauto", "x-systemd.automount", "comment=systemd.automount", "_netdev", "bind", "rbind"};
  if (!line.target.starts_with('/') || line.target == "/" || MayHang(line.type)) return false;
  if (HasWord(line.type, "iso9660") || HasWord(line.type, "udf")) return false;
  if (std::ranges::any_of(kOtherwise, [&](auto word) { return HasWord(line.options, word); }))
    return false;
  return line.type == "zfs" || NamesDisk(line.source);
}

}  // namespace

Mounts::Mounts(std::vector<Mount> rows) : rows_(std::move(rows)) {
  for (const Mount& mount : rows_) byTarget_[mount.target] = &mount;
  FindHangingParents();
}

const Mount* Mounts::FindAt(std::string_view target) const {
  const auto found = byTarget_.find(target);
  return found == byTarget_.end() ? nullptr : found->second;
}

const Mount* Mounts::FindHangingParent(const Mount& mount) const {
  return hangingParents_[static_cast<std::size_t>(&mount - rows_.data())];
}

void Mounts::FindHangingParents() {
  std::unordered_map<int, std::size_t> byId;
  for (std::size_t row = 0; row < rows_.size(); ++row) byId.try_emplace(rows_[row].id, row);
  hangingParents_.resize(rows_.size());
  std::vector<bool> known(rows_.size());
  std::vector<std::size_t> below;  // the rows that the next answer is for
  for (std::size_t first = 0; first < rows_.size(); ++first) {
    const Mount* hanging = nullptr;
    // Parents that go in a circle, as the first mount does, end at a row that was met before.
    for (std::size_t row = first; hanging == nullptr && !known[row];) {
      known[row] = true;
      below.push_back(row);
      const auto parent = byId.find(rows_[row].parent);
      if (parent == byId.end()) break;
      row = parent->second;
      hanging = MayHang(rows_[row].type) ? &rows_[row] : hangingParents_[row];
    }
    for (const std::size_t row : below) hangingParents_[row] = hanging;
    below.clear();
  }
}

Mounts ParseMountInfo(const std::string& text) {
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
  return Mounts(std::move(mounts));
}

bool ReadMounts(MountTable& mounts) {
  static Memo<Mounts> memo;
  std::string text;
  const auto result = ReadSmallFile(BelowRoot("/proc/self/mountinfo").c_str(), kTableCap, text);
  const int error = errno;
  mounts = memo.Of(text, ParseMountInfo);
  errno = error;
  return result == ReadResult::Read;
}

bool MayHang(std::string_view type) {
  constexpr std::string_view kRemote[] = {"autofs", "nfs",  "nfs4",      "cifs",     "smb3",
                                          "smbfs",  "9p",   "afs",       "ceph",     "lustre",
                                          "ocfs2",  "gfs2", "glusterfs", "ncpfs",    "coda",
                                          "beegfs", "gpfs", "pvfs2",     "virtiofs", "sshfs"};
  return type.starts_with("fuse") || std::ranges::find(kRemote, type) != std::end(kRemote);
}

bool IsOwnMount(const Mount& mount) {
  return mount.root == "/" ||
         (mount.type == "btrfs" && HasWord(mount.superOptions, "subvol=" + mount.root));
}

bool IsContainer(const Mounts& mounts) {
  for (const char* mark : {"/run/systemd/container", "/run/.containerenv", "/.dockerenv"})
    if (PathExists(BelowRoot(mark))) return true;
  const Mount* root = mounts.FindAt("/");
  return root != nullptr && !IsOwnMount(*root);
}

const Mount* FindMountOf(const Mounts& mounts, std::string_view path) {
  while (path.starts_with('/')) {
    if (const Mount* mount = mounts.FindAt(path)) return mount;
    if (path == "/") break;
    path = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
  }
  return nullptr;
}

Fstab ParseFstab(const std::string& text) {
  Fstab fstab;
  std::size_t place = 0;
  ForEachEntry(text, [&](libmnt_fs* entry) {
    FstabLine line = {Text(mnt_fs_get_source(entry)), Text(mnt_fs_get_target(entry)),
                      Text(mnt_fs_get_fstype(entry)), Text(mnt_fs_get_options(entry))};
    if (line.target.empty()) return;
    if (line.target.size() > 1 && line.target.ends_with('/')) line.target.pop_back();
    fstab.targets.try_emplace(line.target, place++);
    if (line.source.starts_with("/dev/md")) fstab.arrays.push_back(line.source);
    if (OughtToBeMounted(line)) fstab.storage.push_back(std::move(line));
  });
  return fstab;
}

std::shared_ptr<const Fstab> ReadFstab() {
  static FileMemo<Fstab> memo;
  return memo.Of(BelowRoot("/etc/fstab"), std::size_t{256} << 10,
                 [](ReadResult read, const std::string& text) {
                   Fstab fstab = ParseFstab(text);
                   fstab.unread = MissTable("/etc/fstab", read);
                   return fstab;
                 });
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
