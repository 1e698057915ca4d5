#include "platform/linux/chassis/ses_pages.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <regex>
#include <sstream>

#include "platform/linux/base/process.h"
#include "tests/linux/ses_fixture.h"
#include "tests/support/own_folder.h"

namespace {

using namespace linux_platform;
using Pages = std::vector<std::uint8_t>;

std::optional<Enclosure> Parse(const Pages& configuration, const Pages& status,
                               const Pages& names = {}) {
  std::string reason;
  auto enclosure = ParseSesPages(configuration, status, names, reason);
  EXPECT_EQ(reason.empty(), enclosure.has_value()) << reason;
  return enclosure;
}

std::string Told(const std::vector<EnclosurePart>& parts) {
  std::string text;
  for (const EnclosurePart& part : parts) text += part.name + "=" + TextOf(part.state) + ";";
  return text;
}

TEST(SesPages, FansAndSuppliesAreFoundByTypeAndSummariesDoNotCount) {
  const auto enclosure = Parse(SesPage("configuration"), SesPage("status"), SesPage("names"));
  ASSERT_TRUE(enclosure);
  EXPECT_EQ(enclosure->id, "500a0b0c0d0e0f10");
  EXPECT_EQ(enclosure->product, "JBOD-24");
  EXPECT_EQ(Told(enclosure->supplies), "Supplies 1=ok;Supplies 2=failed;");
  EXPECT_EQ(Told(enclosure->fans), "Cooling 1=ok;Cooling 2=absent;Cooling 3=failed;");
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
      {kSupply, 0xF1, 0, "ok"},      {kFan, 1, 0x27, "ok"},         {kFan, 3, 0x40, "failed"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.at << " " << int{c.code} << " " << int{c.bits});
    Pages status = SesPage("status");
    status[c.at] = c.code;
    status[c.at + 3] = c.bits;
    const auto enclosure = Parse(SesPage("configuration"), status);
    ASSERT_TRUE(enclosure);
    const auto& parts = c.at == kSupply ? enclosure->supplies : enclosure->fans;
    EXPECT_STREQ(TextOf(parts[0].state), c.state);
  }
}

TEST(SesPages, APageThatIsCutShortAnywhereIsRefused) {
  const Pages configuration = SesPage("configuration"), status = SesPage("status");
  for (std::size_t size = 0; size < configuration.size(); ++size)
    EXPECT_FALSE(Parse(Pages(configuration.begin(), configuration.begin() + long(size)), status));
  for (std::size_t size = 0; size < status.size(); ++size)
    EXPECT_FALSE(Parse(configuration, Pages(status.begin(), status.begin() + long(size))));
}

TEST(SesPages, ALengthThatLiesIsRefused) {
  const struct {
    const char* what;
    const char* page;
    std::size_t at;
    std::uint8_t value;
  } cases[] = {
      {"the page is longer than what came", "configuration", 3, 0xFF},
      {"the page is shorter than its header", "configuration", 3, 3},
      {"the page ends within the type list", "configuration", 3, 0x30},
      {"more types than there is room for", "configuration", 10, 0xFF},
      {"more subenclosures than there is room for", "configuration", 1, 0xFF},
      {"a descriptor longer than the page", "configuration", 11, 0xFF},
      {"a descriptor without room for a name", "configuration", 11, 0x23},
      {"more elements than states", "configuration", 53, 0xFF},
      {"another page", "configuration", 0, 2},
      {"the status page ends early", "status", 3, 0x20},
      {"another generation", "status", 7, 8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::map<std::string, Pages> pages = {{"configuration", SesPage("configuration")},
                                          {"status", SesPage("status")}};
    pages[c.page][c.at] = c.value;
    EXPECT_FALSE(Parse(pages["configuration"], pages["status"]));
  }
}

TEST(SesPages, BrokenNamesCostNamesOnly) {
  const Pages configuration = SesPage("configuration"), status = SesPage("status");
  const std::string numbered = "Fan 1=ok;Fan 2=absent;Fan 3=failed;";
  EXPECT_EQ(Told(Parse(configuration, status)->fans), numbered);
  Pages names = SesPage("names");
  names[7] = 9;  // of another generation
  EXPECT_EQ(Told(Parse(configuration, status, names)->fans), numbered);
  names = SesPage("names");
  names[15] = 0xFF;  // the first name is said to reach into the fans'
  names[14] = 0xFF;
  EXPECT_EQ(Told(Parse(configuration, status, names)->fans), numbered);
  names = SesPage("names");
  names[74] = 0;     // "Cooling 1" begins with a NUL
  names[75] = 0x80;  // and goes on with what is no ASCII
  EXPECT_EQ(Parse(configuration, status, names)->fans[0].name, "?oling 1");
}

TEST(SesPages, SubenclosuresAddTheirTypesToTheFirstOnes) {
  Pages configuration = SesPage("configuration");
  configuration[1] = 1;
  configuration[10] = 1;  // the first enclosure now has the slots only
  Pages second(configuration.begin() + 8, configuration.begin() + 48);
  second[2] = 3;
  second[4] = 0x99;
  configuration.insert(configuration.begin() + 48, second.begin(), second.end());
  configuration[3] = static_cast<std::uint8_t>(configuration.size() - 4);
  const auto enclosure = Parse(configuration, SesPage("status"), SesPage("names"));
  ASSERT_TRUE(enclosure);
  EXPECT_EQ(enclosure->id, "500a0b0c0d0e0f10");
  EXPECT_EQ(Told(enclosure->fans), "Cooling 1=ok;Cooling 2=absent;Cooling 3=failed;");
}

// What another decoder makes of the same bytes, in our words.
std::string Decoded(const std::string& text, const std::string& type) {
  const std::regex head(R"((.*) \[\d+,(-?\d+)\]  Element type: (.*))"), code(R"(.*status: (.*))"),
      bit(R"((Fail|AC fail|DC fail)=1)");
  std::istringstream lines(text);
  std::string told, name, state;
  bool counts = false, failed = false;
  const auto finish = [&] {
    if (!counts) return;
    failed |= state == "Critical" || state == "Unrecoverable";
    told += name + "=" + (state == "Not installed" ? "absent" : failed ? "failed" : "ok") + ";";
  };
  for (std::string line; std::getline(lines, line);) {
    std::smatch found;
    if (std::regex_match(line, found, head)) {
      finish();
      name = found[1];
      counts = found[3] == type && found[2] != "-1";
      failed = false;
    } else if (line.starts_with("[")) {  // a summary has no name
      finish();
      counts = false;
    } else if (std::regex_match(line, found, code)) {
      state = found[1];
    }
    if (std::regex_search(line, bit)) failed = true;
  }
  finish();
  return told;
}

TEST(SesPages, AnotherDecoderReadsTheSameStates) {
  const char* tool = "/usr/bin/sg_ses";
  if (access(tool, X_OK) != 0) GTEST_SKIP() << "needs sg_ses of the package sg3-utils";
  const std::string all = test_support::OwnFolder() + "vela-ses-pages.hex";
  std::ofstream file(all);
  for (const char* page : {"configuration", "status", "names"})
    file << std::ifstream(FIXTURES "/ses/" + std::string(page) + ".hex").rdbuf();
  file.close();
  std::string reason, text;
  Child child({tool, "--inhex=" + all, "--status", "--join"}, {std::chrono::seconds(60), 1 << 20},
              reason);
  char part[4096];
  for (ssize_t got; (got = child.Read(part, sizeof part)) > 0;)
    text.append(part, static_cast<std::size_t>(got));
  const auto enclosure = Parse(SesPage("configuration"), SesPage("status"), SesPage("names"));
  EXPECT_EQ(Decoded(text, "Power supply"), Told(enclosure->supplies)) << text;
  EXPECT_EQ(Decoded(text, "Cooling"), Told(enclosure->fans)) << text;
}

}  // namespace
