// The documents are what Pacemaker 2.1.5's crm_mon printed for made-up clusters of "alpha"
// and "beta" (CIB_file=... crm_mon -1 --output-as=xml).
#include "platform/linux/services/ha_state.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace linux_platform;

std::string Document(const std::string& name) {
  std::ifstream file(FIXTURES "/ha/" + name + ".xml");
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string With(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return text.replace(at, what.size(), by);
}

std::string StateOf(const std::string& xml, std::string* why = nullptr) {
  std::string reason;
  const auto state = ParseClusterState(xml, reason);
  EXPECT_EQ(state.has_value(), reason.empty()) << reason;
  if (why != nullptr) *why = reason;
  return state ? NameHaState(*state) : "";
}

TEST(ClusterState, WhatPacemakerPrintsDecides) {
  const struct {
    const char *document, *state;
  } cases[] = {
      {"normal", "normal"},
      {"unmanaged", "normal"},
      {"stopped-on-purpose", "normal"},
      {"failure-ignored", "normal"},
      {"partner-offline", "empty_passive"},
      {"alone", "empty_passive"},
      {"no-quorum", "danger"},
      {"no-dc", "danger"},
      {"unclean", "danger"},
      {"failed", "danger"},
      {"blocked", "danger"},
      {"standby", "warning"},
      {"maintenance-node", "warning"},
      {"maintenance", "warning"},
      {"stopped", "warning"},
      {"stopped-no-target", "warning"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.document);
    EXPECT_EQ(StateOf(Document(c.document)), c.state);
  }
}

TEST(ClusterState, NestingMembersAndMixturesAreSeen) {
  const std::string normal = Document("normal"), failed = Document("failed");
  std::string nested = With(failed, "<resources>", "<resources><clone id='c'><group id='g'>");
  nested = With(nested, "</resources>", "</group></clone></resources>");
  EXPECT_EQ(StateOf(nested), "danger");

  const std::string third =
      R"(<node name="gamma" id="3" online="false" unclean="false" type="member"/></nodes>)";
  EXPECT_EQ(StateOf(With(normal, "</nodes>", third)), "warning") << "one of three is missing";
  EXPECT_EQ(StateOf(With(normal, "</nodes>", With(third, "member", "remote"))), "normal");
  EXPECT_EQ(StateOf(With(Document("alone"), "</nodes>",
                         With(With(third, "false", "true"), "member", "guest"))),
            "empty_passive")
      << "a guest cannot take over";
  EXPECT_EQ(StateOf(With(normal, "pending=\"false\"", "pending=\"true\"")), "warning");
  EXPECT_EQ(StateOf(With(Document("partner-offline"), "failed=\"false\"", "failed=\"true\"")),
            "danger");
}

TEST(ClusterState, NoClusterStatusIsToldFromABadOne) {
  std::string why;
  EXPECT_EQ(StateOf(Document("not-connected"), &why), "");
  EXPECT_EQ(why, "crm_mon could not ask the cluster: Not connected");
  const std::string normal = Document("normal");
  for (const std::string& text :
       {std::string(), std::string("<html/>"), std::string("no cluster"), normal.substr(0, 900),
        With(normal, "code=\"0\"", "code=\"x\""), With(normal, "code=\"0\"", "")}) {
    EXPECT_EQ(StateOf(text), "") << text;
  }
}

TEST(DrbdState, EveryDeviceCounts) {
  const std::string head = "version: 8.4.11 (api:1/proto:86-101)\nsrcversion: 00\n";
  const auto line = [](const std::string& fields) {
    return "\n 0: " + fields + " C r-----\n    ns:0 nr:0 dw:0 dr:0 al:0 bm:0 lo:0 pe:0\n";
  };
  const struct {
    std::string text;
    const char* state;
  } cases[] = {
      {line("cs:Connected ro:Primary/Secondary ds:UpToDate/UpToDate"), "normal"},
      {line("cs:WFConnection ro:Primary/Unknown ds:UpToDate/DUnknown"), "warning"},
      {line("cs:StandAlone ro:Primary/Unknown ds:UpToDate/DUnknown"), "danger"},
      {line("cs:Connected ro:Primary/Secondary ds:Failed/UpToDate"), "danger"},
      {line("cs:Connected ro:Primary/Secondary ds:Diskless/UpToDate"), "danger"},
      {line("cs:SyncTarget ro:Secondary/Primary ds:Inconsistent/UpToDate"), "warning"},
      {line("cs:Connected ro:Primary/Secondary ds:UpToDate/Inconsistent"), "warning"},
      {line("cs:Connected ro:Primary/Secondary ds:UpToDate/UpToDate") +
           line("cs:StandAlone ro:Secondary/Unknown ds:UpToDate/DUnknown"),
       "danger"},
      {" 0: cs:Unconfigured\n", "none"},
      {"", "none"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    bool isVersion8 = false;
    const auto state = ParseDrbdState(head + c.text, isVersion8);
    EXPECT_STREQ(state ? NameHaState(*state) : "none", c.state);
    EXPECT_TRUE(isVersion8);
  }
  bool isVersion8 = true;
  EXPECT_FALSE(ParseDrbdState("version: 9.1.4 (api:2/proto:110-121)\nTransports (api:17): tcp\n",
                              isVersion8));
  EXPECT_FALSE(isVersion8);
}

}  // namespace
