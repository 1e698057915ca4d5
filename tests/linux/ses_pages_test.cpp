#include "platform/linux/chassis/ses_pages.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/linux/ses_fixture.h"

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

constexpr const char* kWhole =
    "Supplies 1=ok;Supplies 2=failed;Cooling 1=ok;Cooling 2=absent;Cooling 3=failed;";

TEST(SesPages, PartsAreFoundByTypeAndSummariesDoNotCount) {
  EXPECT_EQ(Parse(ReadPages()), kWhole);
  Pages trailing = ReadPages();  // some adapters fill the page up
  for (auto& [name, page] : trailing) page.resize(page.size() + 4);
  EXPECT_EQ(Parse(trailing), kWhole);
}

TEST(SesPages, OnlyCertainCodesAndBitsAreFaults) {
  const std::size_t kSupply = 24, kFan = 36;  // offsets of the first of each in the status page
  const struct {
    std::size_t at;
    std::uint8_t code, bits;
    const char* state;
  } cases[] = {
      {kSupply, 1, 0x20, "ok"},      {kSupply, 2, 0, "failed"},     {kSupply, 3, 0x20, "ok"},
      {kSupply, 4, 0, "failed"},     {kSupply, 5, 0x43, "absent"},  {kSupply, 0, 0x43, "unknown"},
      {kSupply, 6, 0x43, "unknown"}, {kSupply, 8, 0x43, "unknown"}, {kSupply, 7, 0, "ok"},
      {kSupply, 1, 0x40, "failed"},  {kSupply, 1, 0x02, "failed"},  {kSupply, 3, 0x01, "failed"},
      {kSupply, 0xF1, 0, "ok"},      {kSupply, 7, 0x01, "failed"},  {kFan, 1, 0x27, "ok"},
      {kFan, 3, 0x40, "failed"},     {kFan, 2, 0, "failed"},        {kFan, 5, 0x40, "absent"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.at << " " << int{c.code} << " " << int{c.bits});
    Pages pages = ReadPages();
    pages["status"][c.at] = c.code;
    pages["status"][c.at + 3] = c.bits;
    const std::string part = c.at == kSupply ? "Supplies 1=" : "Cooling 1=";
    EXPECT_NE(Parse(pages).find(part + c.state + ";"), std::string::npos) << Parse(pages);
  }
}

TEST(SesPages, APageThatLiesIsRefusedAndBrokenNamesCostNamesOnly) {
  const std::string cut = "its configuration page (01h) is cut short",
                    promises = "its configuration page (01h) promises more than it holds",
                    statusCut = "its status page (02h) is cut short",
                    numbered = "Supply 1=ok;Supply 2=failed;Fan 1=ok;Fan 2=absent;Fan 3=failed;";
  const struct {
    const char *what, *page;
    std::map<std::size_t, int> bytes;
    std::string told;
  } cases[] = {
      {"longer than what came", "configuration", {{3, 0xFF}}, cut},
      {"shorter than its header", "configuration", {{3, 3}}, cut},
      {"another page", "configuration", {{0, 2}}, cut},
      {"ends within the type list", "configuration", {{3, 0x30}}, promises},
      {"more types than fit", "configuration", {{10, 0xFF}}, promises},
      {"more subenclosures than fit", "configuration", {{1, 0xFF}}, promises},
      {"a descriptor longer than the page", "configuration", {{11, 0xFF}}, promises},
      {"a descriptor without room for a name", "configuration", {{11, 0x23}}, promises},
      {"more elements than states",
       "configuration",
       {{53, 0xFF}},
       "its status page (02h) has fewer elements than its configuration"},
      {"the status page ends early",
       "status",
       {{3, 0x20}},
       "its status page (02h) has fewer elements than its configuration"},
      {"another page", "status", {{0, 1}}, statusCut},
      {"another generation", "status", {{7, 8}}, "it was reconfigured while it was read"},
      {"names of another generation", "names", {{7, 9}}, numbered},
      {"a name that reaches beyond the page", "names", {{14, 0xFF}, {15, 0xFF}}, numbered},
      {"a blank name",
       "names",
       {{74, 0}, {75, 0}, {76, 0}, {77, 0}, {78, 0}, {79, 0}, {80, 0}, {81, ' '}, {82, 0}},
       "Supplies 1=ok;Supplies 2=failed;Fan 1=ok;Cooling 2=absent;Cooling 3=failed;"},
      {"a name with a NUL, another control and what is no ASCII",
       "names",
       {{74, 0}, {75, 0x80}, {76, 0x1F}, {77, 0x7F}, {78, '~'}},
       "Supplies 1=ok;Supplies 2=failed;???~ng 1=ok;Cooling 2=absent;Cooling 3=failed;"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Pages pages = ReadPages();
    for (const auto& [at, byte] : c.bytes) pages[c.page].at(at) = static_cast<std::uint8_t>(byte);
    EXPECT_EQ(Parse(pages), c.told);
  }
  for (const auto& [name, reason] : {std::pair("configuration", cut), {"status", statusCut}})
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
