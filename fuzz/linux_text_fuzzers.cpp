// Texts and pages that the Linux platform reads, whatever they hold: what comes out must keep what
// the callers rely on. Each function named Fuzz... is a fuzzer: FUZZED names the one of this
// program.
#include <algorithm>
#include <sstream>

#include "fuzz/require.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/chassis/ses_pages.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/mounts.h"
#include "platform/linux/storage/volume_choice.h"
#include "vela_storage.h"

namespace fuzz {

using namespace linux_platform;

void ReadTables(const std::string& text) {
  const Mounts mounts = ParseMountInfo(text);
  const Settings settings(text);
  const FstabTargets fstab = ParseFstab(text).targets;
  std::vector<std::string> paths;
  for (const Mount* mount :
       ChooseVolumes(mounts, false, [](const Mount&) { return true; }).reachable) {
    Require(mount->target.size() < sizeof VELA::ZRT::STORAGE_MANAGER::SpaceRecord::path,
            "room for the path");
    Require(mounts.FindHangingParent(*mount) == nullptr, "nothing chosen hangs");
    const float level = GetWarningLevel(settings, mount->target);
    Require(level >= 0 && level <= 1, "a share");
    FindCrashSigns(*mount);
    paths.push_back(mount->target);
  }
  std::vector<int> numbers = NumberVolumes(paths, fstab, settings);
  std::ranges::sort(numbers);
  Require(numbers.empty() || numbers.front() > 0, "numbers from 1 on");
  Require(std::ranges::adjacent_find(numbers) == numbers.end(), "a number each");
  for (const std::string& area : ParseSwaps(text)) Require(area.starts_with('/'), "a path");
  ParseBootTime(text);
}

// Attributes parted by line ends, members three lines each.
void JudgeArray(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  lines.resize(std::max<std::size_t>(lines.size(), 5));
  MdArray array;
  array.level = lines[0];
  array.state = lines[1];
  array.metadata = lines[2];
  array.disks = std::atoi(lines[3].c_str());
  array.degraded = std::atoi(lines[4].c_str());
  for (std::size_t i = 5; i + 2 < lines.size(); i += 3)
    array.members.push_back({lines[i], lines[i + 1], lines[i + 2], !lines[i].empty()});
  Require(JudgeMd(array, true) >= JudgeMd(array, false), "no better for the system");
}

// Mounts, fstab, swaps, settings, and an array's attributes.
void FuzzLinuxTables(const std::string& text) {
  ReadTables(text);
  JudgeArray(text);
}

// A snapshot's file: an object of this boot, or a reason, or nothing; and whatever the object
// holds, units come of it that are not the machine's own.
void FuzzSnapshot(const std::string& text) {
  Json::Value document;
  std::string reason;
  const SnapshotState state = ParseSnapshot("ses", text, 1'000'000, "b", document, reason);
  const bool isOfNoUse = state == SnapshotState::Failed || state == SnapshotState::Old;
  Require(isOfNoUse == !reason.empty(), "of no use for a reason");
  Require((state == SnapshotState::Read) == document.isObject(), "read is an object");
  Require(reason.size() < 240, "a short reason");
  const auto snapshot = EnclosureSnapshot::FromJson(document);
  for (const ExpansionUnit& unit : ListExpansionUnits(snapshot, {"a1", "0xa2"}))
    Require(unit.id != "a1" && unit.id != "a2", "no unit of its own");
}

// What an enclosure answers: a whole list of parts with printable names, or a reason. The first
// four bytes are the lengths of the first two pages.
void FuzzSesPages(const std::string& text) {
  if (text.size() < 4) return;
  PageBytes rest(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  const auto take = [&rest](std::size_t size) {
    const PageBytes page = rest.first(std::min(size, rest.size()));
    rest = rest.subspan(page.size());
    return page;
  };
  const PageBytes lengths = take(4);
  const PageBytes configuration = take(std::size_t{lengths[0]} << 8 | lengths[1]);
  const PageBytes status = take(std::size_t{lengths[2]} << 8 | lengths[3]);
  const auto isPrintable = [](const std::string& name) {
    return std::ranges::all_of(name, [](char c) { return c >= 0x20 && c <= 0x7E; });
  };
  std::string reason;
  const auto enclosure = ParseSesPages(configuration, status, rest, reason);
  Require(enclosure.has_value() == reason.empty(), "an enclosure or a reason");
  if (!enclosure) return;
  Require(enclosure->id.size() == 16 && enclosure->product.size() <= 16, "an identity");
  Require(isPrintable(enclosure->product), "a printable product");
  Require((enclosure->fans.size() + enclosure->supplies.size()) * 4 <= status.size(),
          "every part has four bytes in the status page");
  for (const auto* parts : {&enclosure->fans, &enclosure->supplies})
    for (const EnclosurePart& part : *parts)
      Require(!part.name.empty() && isPrintable(part.name), "a printable part");
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  fuzz::FUZZED(std::string(data, size));
  return 0;
}
