#include "platform/linux/collector/ipmi_sensors.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

using namespace linux_platform;

std::string Describe(const Json::Value& list) {
  std::string text;
  for (const Json::Value& part : list)
    text += part["name"].asString() + "=" + part["state"].asString() +
            (part["reading"].isInt() ? " " + part["reading"].asString() : "") + ";";
  return text;
}

TEST(IpmiSensors, SuppliesFansAndTemperaturesAreToldFromTheRest) {
  std::stringstream text;
  text << std::ifstream(FIXTURES "/ipmi/sensors.csv").rdbuf();
  const Json::Value members = ParseIpmiSensors(text.str()).ToJson();
  EXPECT_EQ(Describe(members["supplies"]),
            "PS1 Status=ok;PS2 Status=failed;PS3, rear=input_lost;PS4 Status=absent;"
            "PS5 Status=absent;PS6 Status=ok;PS7 Status=failing;");
  EXPECT_EQ(Describe(members["fans"]), "FAN1=ok 3000;FAN2=failed;FAN3=unknown;FAN4=ok 400;");
  EXPECT_EQ(Describe(members["temperatures"]),
            "Inlet=ok 24;CPU=critical 99;Cellar=unknown -5;DIMM=unknown;");
}

TEST(IpmiSensors, OtherTextHasNoSensors) {
  const Json::Value none = IpmiSnapshot().ToJson();
  for (const char* text :
       {"", "\n\n", ",", "Caching SDR repository information: /x\n", ",,,,,,,\n",
        "1,Fan,Critical,'x'\n", "1,'Fan','Critical'", "1,Fan\n", "1,'x,Fan,Nominal,1.00,RPM\n"})
    EXPECT_EQ(ParseIpmiSensors(text).ToJson(), none) << text;
  EXPECT_EQ(Describe(ParseIpmiSensors("1,A\t~\x7F,Fan,Nominal,1.00,RPM,'OK'").ToJson()["fans"]),
            "A?~?=ok 1;");
  EXPECT_EQ(Describe(ParseIpmiSensors("1,A,Fan,Nominal,40.00,%,'OK'").ToJson()["fans"]), "A=ok;");
}

}  // namespace
