#include "tests/linux/machine_tree.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "platform/linux/base/sysfs.h"

namespace {

std::string GetRootDevice() {
  struct stat status = {};
  stat("/", &status);
  return std::to_string(major(status.st_dev)) + ":" + std::to_string(minor(status.st_dev));
}

// With what the words in braces and the escaped bytes stand for.
std::string Resolve(std::string text, const std::string& root) {
  static const std::regex kNamed(R"(\{(now|root|fixtures|device)(-\d+)?\}|\\x([0-9a-f]{2}))");
  std::string resolved;
  for (std::smatch found; std::regex_search(text, found, kNamed);) {
    const std::string name = found.str(1);
    const std::string value =
        name == "now"        ? std::to_string(std::time(nullptr) + std::atol(found.str(2).c_str()))
        : name == "root"     ? root
        : name == "fixtures" ? FIXTURES
        : name == "device"
            ? GetRootDevice()
            : std::string(1, static_cast<char>(std::stoi(found.str(3), nullptr, 16)));
    resolved += found.prefix().str() + value;
    text = found.suffix().str();
  }
  return resolved + text;
}

std::string Indented(std::istream& rest) {
  std::string text, line;
  while (rest.peek() == ' ' && std::getline(rest, line)) text += line.substr(2) + "\n";
  return text;
}

}  // namespace

MachineTree::MachineTree() {
  linux_platform::SetSysRoot((Path() / "sys").string());
  for (const char* folder : {"/sys/dev/block", "/sys/class/block", "/sys/block"})
    std::filesystem::create_directories(Path().string() + folder);
  Write("/proc/swaps", "Filename Type Size Used Priority\n");
}

MachineTree::~MachineTree() { linux_platform::SetSysRoot("/sys"); }

std::vector<std::string> MachineTree::ListThoseWith(const std::string& file) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(FIXTURES "/machines"))
    if (exists(entry.path() / file)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

std::string MachineTree::Read(const std::string& name, const std::string& file) {
  const std::ifstream stream(FIXTURES "/machines/" + name + "/" + file);
  if (!stream) throw std::runtime_error("no machine is called " + name);
  return (std::ostringstream() << stream.rdbuf()).str();
}

void MachineTree::Load(const std::string& name) const {
  std::istringstream tree(Read(name, "tree"));
  for (std::string line; std::getline(tree, line);)
    if (!line.empty() && line[0] != '#') LoadLine(line, tree);
}

void MachineTree::AddLine(const std::string& line) const {
  std::istringstream none;
  LoadLine(line, none);
}

void MachineTree::LoadLine(const std::string& line, std::istream& rest) const {
  const std::string root = Path().string();
  std::istringstream words(line[0] == '/' ? line : Resolve(line, root));
  std::string kind, name, bus, below;
  int major = 0, minor = 0, partitions = 0;
  char colon = 0;
  words >> kind >> name;
  if (kind == "base") {
    Load(name);
  } else if (kind == "disk") {
    words >> bus >> major >> colon >> minor >> partitions;
    Disk(name, bus, major, minor, partitions);
  } else if (kind == "over") {
    words >> major >> colon >> minor;
    std::vector<std::string> devices;
    while (words >> below) devices.push_back(below);
    Mapped(name, major, minor, devices);
  } else if (kind == "-") {
    std::filesystem::remove_all(Path().string() + name);
  } else if (name == "->") {
    words >> below;
    Link(kind, below);
  } else {
    if (kind[0] != '/') throw std::runtime_error("no line of a tree: " + line);
    const bool whole = name == "=";
    const std::string text =
        Resolve(whole ? line.substr(kind.size() + 3) + "\n" : Indented(rest), root);
    const auto file = Write(Resolve(kind, root), text);
    if (text.starts_with("#!")) permissions(file, std::filesystem::perms(0755));
  }
}

void MachineTree::Disk(const std::string& name, const std::string& bus, int major, int minor,
                       int partitions) const {
  const std::string folder = "/sys/devices/" + bus + "/block/" + name;
  Device(name, folder, major, minor);
  Link("/sys/block/" + name, folder);
  for (int i = 1; i <= partitions; ++i) {
    const std::string part = name + (isdigit(name.back()) != 0 ? "p" : "") + std::to_string(i);
    Device(part, folder + "/" + part, major, minor + i);
    Write(folder + "/" + part + "/partition", std::to_string(i) + "\n");
  }
}

void MachineTree::Mapped(const std::string& name, int major, int minor,
                         const std::vector<std::string>& below) const {
  const std::string folder = "/sys/devices/virtual/block/" + name;
  Device(name, folder, major, minor);
  Link("/sys/block/" + name, folder);
  for (const std::string& device : below) {
    const auto target = std::filesystem::canonical(Path().string() + "/sys/class/block/" + device);
    Link(folder + "/slaves/" + device, target.string().substr(Path().string().size()));
  }
}

void MachineTree::Link(const std::string& from, const std::string& to) const {
  const std::filesystem::path link = Path().string() + from;
  std::filesystem::create_directories(link.parent_path());
  std::filesystem::remove(link);
  const std::filesystem::path target = Path().string() + to;
  std::filesystem::create_symlink(target.lexically_relative(link.parent_path()), link);
}

void MachineTree::Device(const std::string& name, const std::string& folder, int major,
                         int minor) const {
  const std::string number = std::to_string(major) + ":" + std::to_string(minor);
  Write(folder + "/size", "2048\n");
  Write(folder + "/dev", number + "\n");
  Link("/sys/class/block/" + name, folder);
  Link("/sys/dev/block/" + number, folder);
}
