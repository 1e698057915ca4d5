#include "platform/linux/chassis/ses_pages.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "tests/linux/ses_fixture.h"
#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

using Pages = std::map<std::string, std::vector<std::uint8_t>>;

Pages ReadPages() {
  Pages pages;
  for (const char* name : {"configuration", "status", "names"}) pages[name] = SesPage(name);
  return pages;
}

// "supply=state;... | fan=state;...", or the reason.
std::string Parse(const Pages& pages) {
  std::string reason;
  const auto enclosure =
      ParseSesPages(pages.at("configuration"), pages.at("status"), pages.at("names"), reason);
  EXPECT_EQ(reason.empty(), enclosure.has_value()) << reason;
  if (!enclosure) return reason;
  const Json::Value entry = enclosure->ToJson();
  EXPECT_EQ(entry["id"], "500a0b0c0d0e0f10");
  EXPECT_EQ(entry["product"], "JBOD-24");
  std::string text;
  for (const char* list : {"supplies", "fans"})
    for (const Json::Value& part : entry[list])
      text += part["name"].asString() + "=" + part["state"].asString() + ";";
  return text;
}

std::uint8_t ParseByte(const std::string& digits) {
  return static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16));
}

constexpr const char* kWhole =
    "Supplies 1=ok;Supplies 2=failed;Cooling 1=ok;Cooling 2=absent;Cooling 3=failed;";

TEST(SesPages, PartsAreFoundByTypeAndSummariesDoNotCount) {
  EXPECT_EQ(Parse(ReadPages()), kWhole);
  Pages trailing = ReadPages();  // some adapters fill the page up
  for (auto& [name, page] : trailing) page.resize(page.size() + 4);
  EXPECT_EQ(Parse(trailing), kWhole);
}

TEST(SesPages, OnlyCertainCodesAndBitsAreFaults) {
  for (const auto& row : ReadTable("ses-elements", 4)) {
    SCOPED_TRACE(row[0] + " " + row[1] + " " + row[2]);
    const bool isSupply = row[0] == "supply";
    const std::size_t at = isSupply ? 24 : 36;  // of the first of each in the status page
    Pages pages = ReadPages();
    pages["status"].at(at) = ParseByte(row[1]);
    pages["status"].at(at + 3) = ParseByte(row[2]);
    const std::string part = isSupply ? "Supplies 1=" : "Cooling 1=";
    EXPECT_NE(Parse(pages).find(part + row[3] + ";"), std::string::npos) << Parse(pages);
  }
}

TEST(SesPages, AFanTellsItsTurnsInTens) {
  Pages pages = ReadPages();
  pages["status"].at(37) = 0xF9;  // the upper five bits are another thing
  pages["status"].at(38) = 0x2C;
  std::string reason;
  const auto read = ParseSesPages(pages["configuration"], pages["status"], {}, reason).value();
  EXPECT_EQ(Enclosure::FromJson(read.ToJson()).fans.at(0).reading, 3000);
  EXPECT_EQ(read.fans.at(1).reading, 0);
}

TEST(SesPages, APageThatLiesIsRefusedAndBrokenNamesCostNamesOnly) {
  for (const auto& row : ReadTable("ses-broken-pages", 4)) {
    Pages pages = ReadPages();
    std::istringstream bytes(row[2]);
    for (std::string byte; bytes >> byte;)
      pages[row[1]].at(std::stoul(byte)) = ParseByte(byte.substr(byte.find('=') + 1));
    EXPECT_EQ(Parse(pages), row[3]) << row[0];
  }
  for (const auto& [name, reason] :
       {std::pair("configuration", "its configuration page (01h) is cut short"),
        {"status", "its status page (02h) is cut short"}})
    for (std::size_t size = 0; size < SesPage(name).size(); ++size) {
      Pages pages = ReadPages();
      pages[name].resize(size);
      EXPECT_EQ(Parse(pages), reason);
    }
}

TEST(SesPages, SubenclosuresAddTheirTypesToTheFirstOnes) {
  Pages pages = ReadPages();
  auto& configuration = pages["configuration"];
  configuration[1] = 1;
  configuration[10] = 1;  // the first enclosure now has the slots only
  std::vector<std::uint8_t> second(configuration.begin() + 8, configuration.begin() + 48);
  second[2] = 3;
  second[4] = 0x99;
  configuration.insert(configuration.begin() + 48, second.begin(), second.end());
  configuration[3] = static_cast<std::uint8_t>(configuration.size() - 4);
  EXPECT_EQ(Parse(pages), kWhole);
}

}  // namespace
