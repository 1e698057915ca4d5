#include "platform/linux/base/snapshot.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/linux/collector/snapshot_folder.h"
#include "tests/linux/temporary_root.h"

namespace {

using namespace linux_platform;

TEST(Snapshot, OnlyAFreshDocumentOfThisBootCounts) {
  const struct {
    const char* text;
    SnapshotState state;
    const char* reason;
  } cases[] = {
      {R"({"written": 1000, "boot_id": "b", "period": 60})", SnapshotState::Read, ""},
      {R"({"written": 820, "boot_id": "b", "period": 60})", SnapshotState::Read, ""},
      {R"({"written": 819, "boot_id": "b", "period": 60})", SnapshotState::Failed,
       "ses.json is 181 s old: vela-platform-collect is stuck or off. See systemctl status "
       "vela-platform-collect, and enable --now vela-platform-collect.timer"},
      {R"({"written": 819, "boot_id": "b", "period": 61})", SnapshotState::Read, ""},
      {R"({"written": 1180, "boot_id": "b", "period": 60})", SnapshotState::Read, ""},
      {R"({"written": 1181, "boot_id": "b", "period": 60})", SnapshotState::Failed,
       "ses.json is from the future: was the clock set back?"},
      {R"({"written": 1000, "boot_id": "a", "period": 60})", SnapshotState::Absent, ""},
      {R"({"written": 1000, "boot_id": "", "period": 60})", SnapshotState::Absent, ""},
      {R"({"written": 1, "boot_id": "a", "period": 60})", SnapshotState::Absent, ""},
      {R"({})", SnapshotState::Absent, ""},
      {R"({"boot_id": "b", "period": 60})", SnapshotState::Failed,
       "ses.json does not say when it was written"},
      {R"({"written": 1000, "boot_id": "b", "period": 0})", SnapshotState::Failed,
       "ses.json does not say when it was written"},
      {R"({"written": 1000, "boot_id": "b", "period": 9223372036854775807})", SnapshotState::Failed,
       "ses.json does not say when it was written"},
      {R"({"written": 1e300, "boot_id": "b", "period": "60"})", SnapshotState::Failed,
       "ses.json does not say when it was written"},
      {R"({"written": -9223372036854775808, "boot_id": "b", "period": 60})", SnapshotState::Failed,
       "ses.json does not say when it was written"},
      {R"({"written": 1000, "boot_id": "b", "period": 60, "error": "bus is dead"})",
       SnapshotState::Failed, "ses: bus is dead"},
      {R"({"written": 1000, "boot_id": "b", "period": 60, "error": 7})", SnapshotState::Failed,
       "ses: could not be read"},
      {R"([1])", SnapshotState::Failed, "ses.json is not a JSON object"},
      {R"({"written": 1000, "boot_)", SnapshotState::Failed, "ses.json is not a JSON object"},
      {"", SnapshotState::Failed, "ses.json is not a JSON object"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Json::Value document;
    std::string reason;
    EXPECT_EQ(ParseSnapshot("ses", c.text, 1000, "b", document, reason), c.state);
    EXPECT_EQ(reason, c.reason);
    EXPECT_EQ(document.isObject(), c.state == SnapshotState::Read);
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

}  // namespace
