// The "get" method from end to end: the document's shape and what it logs.
#include <stdexcept>

#include <vela_api.h>

#include "tests/support/recorded_response.h"
#include "tests/support/simulated_test.h"

extern "C" const VELA::APIMethodRow* GetAPITable();

namespace VELA::SystemHealth {
namespace {

class GetMethod : public SimulatedTest {
 protected:
  Json::Value Get() {
    RecordedResponse response;
    GetAPITable()[0].handler(nullptr, response.AsResponse());
    EXPECT_EQ(response.answers, 1);
    return response.document;
  }

  // The messages after "module/...:<line> ", whose line is a real one.
  std::vector<std::string> Messages() const {
    const std::string source = "3 module/VELA.Core.System.SystemHealth:";
    std::vector<std::string> messages;
    for (const std::string& line : Log()) {
      EXPECT_TRUE(line.starts_with(source)) << line;
      messages.push_back(line.substr(line.find(' ', source.size()) + 1));
    }
    return messages;
  }
};

TEST_F(GetMethod, IsTheOnlyRowOfTheTable) {
  const APIMethodRow* table = GetAPITable();
  EXPECT_STREQ(table[0].api, "VELA.Core.System.SystemHealth");
  EXPECT_EQ(table[0].version, 1);
  EXPECT_STREQ(table[0].method, "get");
  EXPECT_EQ(table[1].api, nullptr);
  EXPECT_EQ(table[1].version, 0);
  EXPECT_EQ(table[1].method, nullptr);
  EXPECT_EQ(table[1].handler, nullptr);
}

TEST_F(GetMethod, KeepsTheRequestOpenWhileTheAnswerIsSent) {
  RecordedResponse response;
  response.whileSending = [] {
    EXPECT_EQ(simulator::Simulated().ledger.objects, 1) << "the snapshot's VelaConf";
    throw std::runtime_error("the server's own");
  };
  EXPECT_THROW(GetAPITable()[0].handler(nullptr, response.AsResponse()), std::runtime_error);
  EXPECT_EQ(Simulated().ledger.objects, 0);
}

TEST_F(GetMethod, WritesTheUptimeWithoutPaddingOrDays) {
  const struct {
    long seconds;
    const char* text;
  } cases[] = {{0, "0:0:0"}, {59, "0:0:59"}, {3600, "1:0:0"}, {93784, "26:3:4"}, {90061, "25:1:1"}};
  for (const auto& c : cases) {
    Simulated().uptime = c.seconds;
    EXPECT_EQ(Get()["uptime"], c.text);
  }
}

TEST_F(GetMethod, LeavesOutAnInterfaceThatCannotBeRead) {
  Simulated().errorCode = 0x1;
  Simulated().interfaces = {{"eth0", "10.0.0.1"},
                            {.name = "eth1", .address = "10.0.0.2", .fails = true},
                            {"wlan0", "", "wifi"}};
  const Json::Value interfaces = Get()["interfaces"];
  ASSERT_EQ(interfaces.size(), 2U);
  EXPECT_EQ(interfaces[0]["id"], "eth0");
  EXPECT_EQ(interfaces[1]["id"], "wlan0");
  EXPECT_EQ(interfaces[1]["ip"], "");
  EXPECT_EQ(interfaces[1]["type"], "wifi");
  EXPECT_EQ(Messages(),
            std::vector<std::string>{
                "Failed to get interface: [eth1] information.[0x0001 simulator.cpp:1]"});
}

TEST_F(GetMethod, ListsThirtyTwoInterfacesAtMost) {
  Simulated().interfaces.clear();
  for (int i = 0; i < 40; ++i) Simulated().interfaces.push_back({"eth" + std::to_string(i), ""});
  EXPECT_EQ(Get()["interfaces"].size(), 32U);
  EXPECT_TRUE(Messages().empty()) << "what stands behind the list was taken for an interface";
}

}  // namespace
}  // namespace VELA::SystemHealth
