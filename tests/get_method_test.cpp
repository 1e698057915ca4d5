// What of the "get" method no scenario's answer shows.
#include <json/json.h>

#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

class GetMethod : public SimulatedTest {};

TEST_F(GetMethod, IsTheOnlyRowOfTheTable) {
  const APIMethodRow *table = GetAPITable(), &end = table[1];
  EXPECT_EQ(std::string(table->api) + "/" + table->method, "VELA.Core.System.SystemHealth/get");
  EXPECT_EQ(table->version, 1);
  EXPECT_FALSE(end.api != nullptr || end.version != 0 || end.method != nullptr || end.handler);
}

TEST_F(GetMethod, KeepsTheRequestOpenWhileTheAnswerIsSent) {
  RecordedResponse response;
  response.whileSending = [] {
    EXPECT_EQ(simulator::Simulated().ledger.objects, 1) << "the snapshot's VelaConf";
    throw Json::RuntimeError("the server's own");
  };
  EXPECT_THROW(GetAPITable()[0].handler(nullptr, response.AsResponse()), Json::RuntimeError);
}

TEST_F(GetMethod, LeavesWhatThePlatformThrowsAsItIs) {
  Simulated().interfaces.resize(1);
  Simulated().haRunning = true;
  for (const char* thrower : {"VELAUPSInfoGet", "VELAHAGetOverviewStatusDL", "GetTypeString"}) {
    Simulated().ledger.onCall = [thrower](std::string_view name) {
      if (name == thrower) throw Json::RuntimeError("the platform's own");
    };
    EXPECT_THROW(Ask(Simulated()), Json::RuntimeError) << thrower;
  }
}

TEST_F(GetMethod, CountsMoreLunsThanAnIntHolds) {
  Json::Value san;
  for (Json::ArrayIndex i = 0; i < 50'000; ++i) {
    san["luns"][i]["location"] = "/volume1";
    san["volumes"][i]["path"] = "/volume1";
  }
  Simulated().sanOutput = san.toStyledString();
  const Json::Value rule = Ask(Simulated()).document["rule"];
  EXPECT_EQ(rule["description"]["description_format"], "iscsimgr:luns_reach_hard_limit");
  EXPECT_EQ(rule["description"]["description_params"][0], "2500000000");
}

}  // namespace
}  // namespace VELA::SystemHealth
