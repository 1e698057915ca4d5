// The documents are what Pacemaker 2.1.5's crm_mon printed for made-up clusters of "alpha"
// and "beta" (CIB_file=... crm_mon -1 --output-as=xml).
#include "platform/linux/services/ha_state.h"

#include <gtest/gtest.h>

#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

TEST(ClusterState, WhatPacemakerPrintsDecides) {
  for (const auto& row : ReadTable("cluster-states", 4)) {
    SCOPED_TRACE(testing::PrintToString(row));
    std::ostringstream document;
    document << std::ifstream(FIXTURES "/ha/" + row[0] + ".xml").rdbuf();
    std::string xml = document.str(), reason;
    const std::size_t at = xml.find(row[1]);
    ASSERT_NE(at, std::string::npos);
    xml.replace(at, row[1].size(), row[2]);
    const auto state = ParseClusterState(xml, reason);
    EXPECT_EQ(state ? NameHaState(*state) : reason, row[3]);
    EXPECT_EQ(state.has_value(), reason.empty());
  }
}

TEST(DrbdState, EveryDeviceCounts) {
  const std::string head = "version: 8.4.11 (api:1/proto:86-101)\nsrcversion: 00\n",
                    figures = "\n    ns:0 nr:0 dw:0 dr:0 al:0 bm:0 lo:0 pe:0\n",
                    well = " 1: cs:Connected ro:Primary/Secondary ds:UpToDate/UpToDate C r-----";
  const auto parse = [](const std::string& text) {
    bool isVersion8 = false;
    const auto state = ParseDrbdState(text, isVersion8);
    EXPECT_TRUE(isVersion8);
    return state ? NameHaState(*state) : "";
  };
  for (const auto& row : ReadTable("drbd", 2)) {
    const std::string line = "\n 0: " + row[0] + figures;
    EXPECT_EQ(parse(head + line), row[1]) << row[0];
    if (row[1].empty()) continue;
    EXPECT_EQ(parse(head + line + well + figures), row[1]) << row[0] << ", before one that is well";
    EXPECT_EQ(parse(head + well + figures + line), row[1]) << row[0] << ", after one that is well";
  }
  bool isVersion8 = true;
  EXPECT_FALSE(ParseDrbdState("version: 9.1.4 (api:2)\nTransports (api:17): tcp\n", isVersion8));
  EXPECT_FALSE(isVersion8);
}

}  // namespace
