#include "platform/linux/base/snapshot.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "tests/linux/table.h"
#include "tests/linux/temporary_root.h"

namespace {

using namespace linux_platform;

TEST(Snapshot, OnlyAFreshDocumentOfThisBootCounts) {
  const std::pair<SnapshotState, const char*> names[] = {{SnapshotState::Read, "read"},
                                                         {SnapshotState::Absent, "absent"},
                                                         {SnapshotState::Old, "old"},
                                                         {SnapshotState::Failed, "failed"}};
  for (const auto& row : ReadTable("snapshots", 3)) {
    SCOPED_TRACE(row[0]);
    Json::Value document;
    std::string reason;
    const SnapshotState state = ParseSnapshot("ses", row[0], 1000, "b", document, reason);
    for (const auto& [each, name] : names) EXPECT_EQ(state == each, row[1] == name);
    EXPECT_EQ(reason, row[2]);
    EXPECT_EQ(document.isObject(), state == SnapshotState::Read);
  }
}

TEST(Snapshot, OfAKernelThatDoesNotNameItsBootNothingCounts) {
  Json::Value document;
  std::string reason;
  const char* text = R"({"written": 1000, "boot_id": "", "period": 60})";
  EXPECT_EQ(ParseSnapshot("ses", text, 1000, "", document, reason), SnapshotState::Absent);
}

TEST(Snapshot, TheTimerMakesANewOneWhenItSaysSo) {
  std::ifstream timer(FIXTURES "/../../../packaging/systemd/vela-platform-collect.timer");
  const std::string text{std::istreambuf_iterator<char>(timer), {}};
  EXPECT_NE(text.find("\nOnUnitActiveSec=60\n"), std::string::npos) << text;
  EXPECT_EQ(kSnapshotPeriod, 60);
}

TEST(Root, NoLinkLeadsOutOfItAndNothingInItIsAwaited) {
  for (const auto& row : ReadTable("links-below-a-root", 3)) {
    SCOPED_TRACE(row[0]);
    const TemporaryRoot outside, root;
    const std::string plant = "T=" + root.Path().string() + " O=" + outside.Path().string() +
                              "; echo outside >$O/keep; " + row[1];
    ASSERT_EQ(system(plant.c_str()), 0);
    SetRoot(root.Path().string(), false);
    EXPECT_EQ(Attribute(BelowRoot("/file")), row[2]);
    EXPECT_EQ(Attribute(LinkTarget(BelowRoot("/file"))), row[2]);
    std::string text;
    EXPECT_EQ(ReadSmallFile(BelowRoot("/file").c_str(), 99, text) == ReadResult::Read,
              !row[2].empty());
    EXPECT_EQ(PathExists(BelowRoot("/file")), !row[1].ends_with("/keep $T/file"));
  }
}

TEST(Snapshot, TheFileIsReadBelowTheRoot) {
  const TemporaryRoot root;
  Json::Value document;
  std::string reason;
  EXPECT_EQ(ReadSnapshot("ses", document, reason), SnapshotState::Absent);

  root.Write("/proc/sys/kernel/random/boot_id", "3a1f\n");
  root.Write("/run/vela-platform/ses.json", R"({"written": )" + std::to_string(time(nullptr)) +
                                                R"(, "boot_id": "3a1f", "period": 60, "x": 7})");
  ASSERT_EQ(ReadSnapshot("ses", document, reason), SnapshotState::Read);
  EXPECT_EQ(document["x"], 7);

  root.Write("/run/vela-platform/ses.json", std::string((1 << 20) + 1, ' '));
  EXPECT_EQ(ReadSnapshot("ses", document, reason), SnapshotState::Failed);
  EXPECT_EQ(reason, "ses.json is larger than 1 MiB");

  root.Write("/run/vela-platform/ipmi.json/x", "a folder in the file's place");
  EXPECT_EQ(ReadSnapshot("ipmi", document, reason), SnapshotState::Failed);
  EXPECT_EQ(reason, "ipmi.json could not be read: Is a directory");
}

TEST(Snapshot, TheYoungestOfThisBootSaysWhenTheCollectorLooked) {
  const TemporaryRoot root;
  EXPECT_EQ(FindSnapshotTime(), -1);
  root.Write("/proc/sys/kernel/random/boot_id", "3a1f\n");
  root.Write("/run/vela-platform/.ses.lock", "");
  EXPECT_EQ(FindSnapshotTime(), -1);
  root.Write("/run/vela-platform/md.json", R"({"written": 1700, "boot_id": "3a1f"})");
  root.Write("/run/vela-platform/ses.json",
             R"({"written": 1760, "boot_id": "3a1f", "error": "x"})");
  root.Write("/run/vela-platform/nut.json", R"({"written": 1730, "boot_id": "3a1f"})");
  root.Write("/run/vela-platform/old.json", R"({"written": 1999, "boot_id": "before"})");
  root.Write("/run/vela-platform/new.json.1", R"({"written": 1999, "boot_id": "3a1f"})");
  root.Write("/run/vela-platform/cut.json", R"({"written": 1999, "boot)");
  EXPECT_EQ(FindSnapshotTime(), 1760);
}

}  // namespace
