#include "host/notify/store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/text/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char *kStateFile = "state.json", *kAskingFile = "asking";
constexpr std::chrono::seconds kLockWait{5};

// Of a folder, which is locked without a file of its own: nothing is written for it.
int OpenFolder(const fs::path& folder) {
  return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool WriteWhole(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// What root writes by hand belongs to whom the folder belongs to, who must read it in the next
// round.
void GiveToOwner(int file, const fs::path& folder) {
  struct stat owner = {};
  if (geteuid() == 0 && stat(folder.c_str(), &owner) == 0)
    (void)!fchown(file, owner.st_uid, owner.st_gid);
}

// Also on the disk: the file before its name, and then the name.
bool ReplaceDurably(const fs::path& folder, std::string_view text) {
  const fs::path file = folder / kStateFile, beside = folder / ".state.json.new";
  const int out = open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (out < 0) return false;
  GiveToOwner(out, folder);
  const bool whole = WriteWhole(out, text) && fsync(out) == 0;
  const int error = errno;
  close(out);
  if (!whole || rename(beside.c_str(), file.c_str()) != 0) {
    if (!whole) errno = error;
    const int reason = errno;
    unlink(beside.c_str());
    errno = reason;
    return false;
  }
  const int holder = OpenFolder(folder);
  if (holder >= 0) fsync(holder);
  if (holder >= 0) close(holder);
  return true;
}

// False when there is none.
bool ReadWhole(const fs::path& file, std::string& text) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0 && errno == ENOENT) return false;
  std::ostringstream whole;
  if (S_ISREG(status.st_mode)) whole << std::ifstream(file, std::ios::binary).rdbuf();
  text = whole.str();
  return true;
}

}  // namespace

Store::Store(fs::path folder, fs::path spare) : folders_{std::move(folder)} {
  if (!spare.empty()) folders_.push_back(std::move(spare));
  mkdir(folders_.front().c_str(), 0700);
  for (const fs::path& each : folders_)
    if (lock_ < 0) lock_ = OpenFolder(each);
  const auto end = std::chrono::steady_clock::now() + kLockWait;
  while (lock_ >= 0 && flock(lock_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    if (std::chrono::steady_clock::now() >= end)
      throw Failure(kBusy, "Another vela-health notify is at work in " + folders_.front().string() +
                               ". Wait for it, or stop it.");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

Store::~Store() {
  EndAsking();
  if (lock_ >= 0) close(lock_);
}

State Store::Load(std::string& problem) {
  State newest;
  newest.began = std::time(nullptr);
  for (const fs::path& folder : folders_) {
    const fs::path file = folder / kStateFile;
    std::string text;
    State state;
    if (!ReadWhole(file, text)) continue;
    if (!ReadState(text, state)) {
      problem = file.string();
    } else if (state.saved > newest.saved) {
      newest = std::move(state);
      written_ = std::move(text);
    }
  }
  // A damaged copy beside a good one is an old one that nobody wants, or was never whole.
  if (newest.saved > 0) problem.clear();
  return newest;
}

bool Store::Save(State& state, std::string& problem) {
  if (WriteState(state) == written_) return true;
  ++state.saved;
  std::string text = WriteState(state);
  for (const fs::path& folder : folders_) {
    if (ReplaceDurably(folder, text)) {
      written_ = std::move(text);
      // What the spare folder still holds is older now, and must never be taken for the newest.
      if (folder != folders_.back()) unlink((folders_.back() / kStateFile).c_str());
      return true;
    }
    if (problem.empty())
      problem = "Cannot write " + (folder / kStateFile).string() + ": " + std::strerror(errno);
  }
  return false;
}

// In the spare folder, which is memory, where there is one: no disk wakes up for it.
bool Store::BeginAsking() const {
  const fs::path file = folders_.back() / kAskingFile;
  const int made = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (made >= 0) close(made);
  return made < 0 && errno == EEXIST;
}

void Store::EndAsking() const { unlink((folders_.back() / kAskingFile).c_str()); }

}  // namespace host
