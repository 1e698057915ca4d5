#include "host/cli/places.h"

#include <algorithm>
#include <utility>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>

#include "host/text/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr std::size_t kMostNames = 3;

Words SplitWords(std::string_view name) {
  Words words;
  boost::algorithm::split(words, name, boost::algorithm::is_any_of("-_ "),
                          boost::algorithm::token_compress_on);
  return words;
}

// A sentence with the names in `folder` that share the most words with `wanted`, and with where
// all names are.
std::string SuggestScenarios(const std::filesystem::path& folder, std::string_view wanted) {
  const Words words = SplitWords(wanted);
  // Ordered by words that are not shared: few foreign words come first.
  std::vector<std::pair<int, std::string>> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (!entry.is_directory(error)) continue;
    const std::string name = entry.path().filename();
    const Words own = SplitWords(name);
    const auto shared = std::count_if(words.begin(), words.end(), [&own](const std::string& word) {
      return std::find(own.begin(), own.end(), word) != own.end();
    });
    if (shared > 0) names.emplace_back(static_cast<int>(own.size()) - 3 * shared, name);
  }
  if (names.empty()) return "All names: ls " + folder.string();
  std::sort(names.begin(), names.end());
  names.resize(std::min(names.size(), kMostNames));
  Words best;
  for (auto& [foreign, name] : names) best.push_back(std::move(name));
  return "There is: " + boost::algorithm::join(best, ", ") + ". All names: ls " + folder.string();
}

}  // namespace

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

fs::path Places::FindLibrary(const std::string& file) const {
  for (const fs::path& folder : libraries_) {
    if (fs::exists(folder / file)) return (folder / file).lexically_normal();
  }
  return (libraries_.front() / file).lexically_normal();
}

std::string Places::FindScenario(const std::string& nameOrPath) const {
  if (nameOrPath.find('/') != std::string::npos) return nameOrPath;
  const fs::path shipped = data_ / "scenarios";
  std::error_code error;  // a name may be too long for one, or for this user
  if (fs::exists(shipped / nameOrPath, error)) return shipped / nameOrPath;
  if (fs::exists(nameOrPath, error)) return nameOrPath;
  throw Failure(kNoInput, "There is no scenario \"" + nameOrPath + "\", neither in " +
                              shipped.string() + " nor in the current folder. " +
                              SuggestScenarios(shipped, nameOrPath));
}

}  // namespace host
