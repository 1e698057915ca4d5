// The documents are what Pacemaker 2.1.5's crm_mon printed for made-up clusters of "alpha"
// and "beta" (CIB_file=... crm_mon -1 --output-as=xml).
#include "platform/linux/services/ha_state.h"

#include <gtest/gtest.h>

#include "platform/linux/services/cluster_snapshot.h"
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
    EXPECT_EQ(state ? NameHaState(state->state) : reason, row[3]);
    EXPECT_EQ(state.has_value(), reason.empty());
  }
}

// Why, and who is in it: what the collector keeps of it is the same.
TEST(ClusterState, CausesAndNodesAreNamed) {
  for (const auto& row : ReadTable("cluster-causes", 3)) {
    std::ostringstream document, nodes, causes;
    document << std::ifstream(FIXTURES "/ha/" + row[0] + ".xml").rdbuf();
    std::string reason;
    const ClusterSnapshot seen = {ParseClusterState(document.str(), reason)};
    const auto kept = ClusterSnapshot::FromJson(seen.ToJson()).report.value();
    for (const auto& [name, state] : kept.nodes) nodes << name << "=" << state << ";";
    for (const auto& [what, name, detail] : kept.causes)
      causes << what << " " << name << " " << detail << ";";
    EXPECT_EQ(nodes.str(), row[1]) << row[0];
    EXPECT_EQ(causes.str(), row[2]) << row[0];
  }
}

TEST(DrbdState, EveryDeviceCounts) {
  const std::string head = "version: 8.4.11 (api:1/proto:86-101)\nsrcversion: 00\n",
                    figures = "\n    ns:0 nr:0 dw:0 dr:0 al:0 bm:0 lo:0 pe:0\n",
                    well = " 1: cs:Connected ro:Primary/Secondary ds:UpToDate/UpToDate C r-----";
  const auto parse = [](const std::string& text) {
    bool isVersion8 = false;
    std::vector<ClusterCause> causes;
    const auto state = ParseDrbdState(text, isVersion8, causes);
    EXPECT_TRUE(isVersion8);
    EXPECT_EQ(causes.size(), state.value_or(HaState::Normal) == HaState::Normal ? 0U : 1U);
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
  std::vector<ClusterCause> causes;
  EXPECT_FALSE(
      ParseDrbdState("version: 9.1.4 (api:2)\nTransports (api:17): tcp\n", isVersion8, causes));
  EXPECT_FALSE(isVersion8);
}

}  // namespace
