#include "platform/linux/storage/expected_arrays.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <sstream>

#include "platform/linux/base/file_memo.h"
#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/udev_record.h"

namespace linux_platform {
namespace {

constexpr std::string_view kNode = "/dev/", kNamed = "/dev/md/";

// "data" of "host:data".
std::string_view SkipHost(std::string_view name) { return name.substr(name.rfind(':') + 1); }

bool BeginsWithoutCase(const std::string& word, std::string_view key) {
  return strncasecmp(word.c_str(), key.data(), key.size()) == 0;
}

void AddLine(const std::string& line, std::vector<ExpectedArray>& arrays) {
  std::istringstream words(line);
  std::string word;
  if (!(words >> word) || strcasecmp(word.c_str(), "ARRAY") != 0) return;
  ExpectedArray array;
  while (words >> word && word[0] != '#') {
    if (word == "<ignore>") return;
    if (BeginsWithoutCase(word, "uuid=")) array.uuid = ToUuid(word.substr(5));
    if (BeginsWithoutCase(word, "name=")) array.name = SkipHost(std::string_view(word).substr(5));
    if (word.find('=') == word.npos) array.device = word;
  }
  arrays.push_back(std::move(array));
}

// "md0" of "/dev/md0" and "/dev/md/0"; where the link "/dev/md/data" leads; "" for no such name.
std::string ToKernelName(std::string_view device) {
  if (!device.starts_with(kNamed) && device.starts_with(kNode))
    return std::string(device.substr(kNode.size()));
  const std::string_view name = device.starts_with(kNamed) ? device.substr(kNamed.size()) : device;
  if (ToNumber(name)) return Concatenate("md", name);
  return std::string(LastComponent(ReadLink(BelowRoot(kNamed, name))));
}

}  // namespace

std::string ToUuid(std::string_view text) {
  std::string uuid;
  for (const char c : text)
    if (isxdigit(static_cast<unsigned char>(c)) != 0)
      uuid.push_back(static_cast<char>(tolower(static_cast<unsigned char>(c))));
  return uuid;
}

std::string NameArray(const ExpectedArray& array) {
  return array.device.empty() ? array.uuid : array.device;
}

std::vector<ExpectedArray> ParseMdadmConf(const std::string& text) {
  std::vector<ExpectedArray> arrays;
  std::istringstream lines(text);
  std::string whole;
  for (std::string line; std::getline(lines, line);) {
    // One that begins with a blank goes on with the last.
    if (!line.empty() && (line[0] == ' ' || line[0] == '\t')) {
      whole.append(line);
      continue;
    }
    AddLine(whole, arrays);
    whole = line;
  }
  AddLine(whole, arrays);
  return arrays;
}

std::vector<ExpectedArray> ReadMdadmConf(std::vector<Trouble>& troubles) {
  struct Table {
    std::vector<ExpectedArray> arrays;
    Trouble unread;
  };
  static FileMemo<Table> memo;
  constexpr const char *kFile = "/etc/mdadm/mdadm.conf", *kFolder = "/etc/mdadm/mdadm.conf.d";
  constexpr std::size_t kCap = std::size_t{256} << 10;
  const auto main = memo.Of(BelowRoot(kFile), kCap, [](ReadResult read, const std::string& text) {
    return Table{ParseMdadmConf(text), MissTable(kFile, read)};
  });
  std::vector<ExpectedArray> arrays = main->arrays;
  AddTrouble(main->unread, troubles);
  errno = 0;
  const std::vector<std::string> names = NamesIn(BelowRoot(kFolder));
  if (errno == EACCES) AddTrouble(MissTable(kFolder, ReadResult::Failed), troubles);
  for (const std::string& name : names) {
    if (!name.ends_with(".conf")) continue;
    std::string text;
    const std::string path = Within(kFolder, name);
    AddTrouble(MissTable(path, ReadSmallFile(BelowRoot(path).c_str(), kCap, text)), troubles);
    std::ranges::move(ParseMdadmConf(text), std::back_inserter(arrays));
  }
  return arrays;
}

bool IsArray(const ExpectedArray& expected, const MdArray& array) {
  if (!expected.device.empty() && ToKernelName(expected.device) == array.name) return true;
  // udev does not look at an array before it runs, but at its members as they come. At a firmware's
  // container, which never runs, it does; of the members of that it knows nothing.
  std::string uuid = ToUuid(ReadUdevPropertyOf(array.name, "MD_UUID"));
  const bool isTold = !uuid.empty() || array.members.empty();
  const std::string& told = isTold ? array.name : array.members.front().device;
  if (!isTold) uuid = ToUuid(ReadUdevPropertyOf(told, "ID_FS_UUID"));
  if (!expected.uuid.empty() && !uuid.empty()) return uuid == expected.uuid;
  const std::string name = ReadUdevPropertyOf(told, isTold ? "MD_NAME" : "ID_FS_LABEL");
  return !name.empty() && (SkipHost(name) == expected.name ||
                           Concatenate(kNamed, SkipHost(name)) == expected.device);
}

}  // namespace linux_platform
