#include "platform/linux/collector/ipmi_sensors.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

using namespace linux_platform;

std::string Told(const Json::Value& list) {
  std::string text;
  for (const Json::Value& part : list)
    text += part["name"].asString() + "=" + part["state"].asString() + ";";
  return text;
}

TEST(IpmiSensors, SuppliesFansAndTemperaturesAreToldFromTheRest) {
  std::stringstream text;
  text << std::ifstream(FIXTURES "/ipmi/sensors.csv").rdbuf();
  const Json::Value members = ParseIpmiSensors(text.str());
  EXPECT_EQ(Told(members["supplies"]),
            "PS1 Status=ok;PS2 Status=failed;PS3, rear=input_lost;PS4 Status=absent;"
            "PS5 Status=absent;PS6 Status=ok;PS7 Status=failed;");
  EXPECT_EQ(Told(members["fans"]), "FAN1=ok;FAN2=failed;FAN3=unknown;FAN4=ok;");
  EXPECT_EQ(Told(members["temperatures"]), "Inlet=ok;CPU=critical;Cellar=unknown;DIMM=unknown;");
}

TEST(IpmiSensors, OtherTextHasNoSensors) {
  for (const char* text : {"", "\n\n", ",", "Caching SDR repository information: /x\n", ",,,,,,,\n",
                           "1,Fan,Critical,'x'\n", "1,'Fan','Critical'", "1,Fan\n"}) {
    SCOPED_TRACE(text);
    const Json::Value members = ParseIpmiSensors(text);
    EXPECT_TRUE(members["supplies"].isArray() && members["supplies"].empty());
    EXPECT_TRUE(members["fans"].empty());
  }
}

}  // namespace
