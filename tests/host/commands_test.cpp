// What the commands print: status where something failed, explain, report.
#include <gtest/gtest.h>
#include <json/reader.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "support/program.h"
#include "tests/support/own_folder.h"

namespace host::test {
namespace {

std::vector<std::string> ScenariosNamed(const std::string& start) {
  std::vector<std::string> names;
  for (const auto& folder : std::filesystem::directory_iterator(VELA_SCENARIOS)) {
    const std::string name = folder.path().filename();
    if (folder.is_directory() && name.starts_with(start)) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(Status, WhatCouldNotBeReadIsNamedAndNeverCalledHealthy) {
  const std::vector<std::string> failing = ScenariosNamed("failing-");
  ASSERT_GT(failing.size(), 30U);
  for (const std::string& name : failing) {
    const Outcome outcome = RunProgram({"--scenario", name, "--lang", "en"});
    SCOPED_TRACE(name + "\n" + outcome.out);
    const bool finding = Contains(outcome.out, "What to do:");
    EXPECT_EQ(outcome.status == 3, !finding);
    EXPECT_EQ(outcome.out.starts_with("Healthy as far as could be read.\n"), !finding);
    EXPECT_TRUE(Contains(outcome.out, "  Could not read "));
  }
}

TEST(Explain, ShowsEveryCheckerAndWhatDecided) {
  const struct {
    const char *scenario, *language;
    std::vector<std::string> words;
  } cases[] = {
      {"fan-failed-and-cluster-trouble",
       "en",
       {"Volume usage: nothing to report\n    model without disk bays: no\n",
        "System status: A system fan has failed. (Warning, priority 0)\n  ▸ fan failed: yes\n",
        "  ▸ status: danger\n", "  2. The high-availability cluster", "  0 beats 0.5: "}},
      {"volume-low",
       "en",
       {"  ▸ volume 1 – 93.1\u00A0GiB free of 3.3\u00A0TiB: below the mark of 168\u00A0GiB "
        "(5\u00A0%)\n",
        "\n    Disk 1, Disk 2, Disk 3, Disk 4, ", "It is the only finding."}},
      {"supply-failed-here-and-in-a-unit",
       "de",
       {"Beide haben Priorität 3.9: ", "Zustand des Systems kommt vor Erweiterungseinheiten"}},
      {"san-lun-crashed", "fr", {"  ▸ LUN-1 – état\u00A0: Unhealthy\n", "    LUN-2 – "}},
      {"volume-inodes-low",
       "en",
       {"  ▸ volume 2 – 40 of ", " inodes free: below the mark of ", "inodes free: enough,"}},
      {"healthy", "es", {"Ninguna comprobación encontró nada."}},
      {"failing-ups", "ja", {"UPS を読み取れませんでした"}}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram({"explain", "--lang", c.language, "--scenario", c.scenario});
    SCOPED_TRACE(outcome.out);
    for (const std::string& words : c.words) EXPECT_TRUE(Contains(outcome.out, words)) << words;
    const bool spaceIsLow = c.scenario == std::string("volume-low");
    EXPECT_FALSE(spaceIsLow && Contains(outcome.out, "inodes")) << "these were not looked at";
  }
}

// The names of all inputs in what a checker saw.
void CollectNames(const Json::Value& saw, std::set<std::string>& names) {
  for (auto member = saw.begin(); member != saw.end(); ++member) {
    const std::string name = saw.isObject() ? member.name() : "";
    if (name == "compared" || name == "decides") continue;
    if (!name.empty()) names.insert(name);
    if (member->isObject() || member->isArray()) CollectNames(*member, names);
  }
}

TEST(Explain, EverythingThatItNamesHasATranslation) {
  const auto explained = [](const char* scenario) {
    Json::Value document;
    std::istringstream in(RunProgram({"explain", "--json", "--scenario", scenario}).out);
    in >> document;
    return document["checkers"];
  };
  std::set<std::string> checkers, inputs;
  for (const char* scenario : {"everything-at-once", "healthy"}) {
    for (const Json::Value& checker : explained(scenario)) {
      checkers.insert(checker["name"].asString());
      CollectNames(checker["saw"], inputs);
    }
  }
  Json::Value texts;
  std::ifstream(VELA_TEXTS "/explain/en.json") >> texts;
  for (const std::string& name : checkers) EXPECT_TRUE(texts["checker"].isMember(name)) << name;
  for (const std::string& name : inputs) EXPECT_TRUE(texts["input"].isMember(name)) << name;
  EXPECT_EQ(checkers.size(), 10U);
  EXPECT_GT(inputs.size(), 20U);
}

constexpr const char* kHostile = R"({"why": ".", "hostName": "</title><script>\"'&",
  "network": {"interfaces": [{"name": "<img src=x>", "address": "\\u202e\"onload=\"a"}]},
  "externalVolumes": {"usb": [{"name": "<b>{1}'صور", "total": 100, "free": 1}]}})";

TEST(Report, IsOnePageInItselfWhateverNamesHold) {
  const std::string scenario = Scenario("hostile", kHostile);
  for (const char* language : {"en", "de", "fr", "es", "ja", "zh-CN"}) {
    const Outcome report = RunProgram({"report", "-", "--scenario", scenario, "--lang", language});
    SCOPED_TRACE(report.out);
    EXPECT_EQ(report.status, 1);
    EXPECT_TRUE(Contains(report.out, std::string("<html lang=\"") + language + "\">"));
    EXPECT_TRUE(Contains(report.out, "&lt;/title&gt;&lt;script&gt;&quot;&#39;&amp;"));
    EXPECT_TRUE(Contains(report.out, "<h1 class=\"sentence\">&lt;b&gt;{1}&#39;صور"));
    EXPECT_TRUE(Contains(report.out, "1\u00A0B"));
    for (const char* never : {"<script", "<img", "<b>{1}", "\u202e", "\"onload",
                              "http:", "https:", "src=\"", "url(", "@import", "widget:", "ui:"}) {
      const std::size_t document = report.out.find("<details>");
      EXPECT_FALSE(Contains(report.out.substr(0, document), never)) << never;
    }
  }
}

TEST(Report, HoldsFindingsChecksSourcesAndTheDocument) {
  const Outcome report =
      RunProgram({"report", "-", "--scenario", "everything-at-once", "--lang", "en"});
  EXPECT_EQ(report.status, 2);
  for (const char* words :
       {"Your data is in danger", "What it means", "If ignored", "What to do", "Further findings",
        "1 LUN has crashed.", "-2.2 beats -2.1", "class=\"decides\">volume 1", "11 of 11 sources",
        "<td>high availability</td>", "<bdi>vela</bdi>", "Checked on 2", "192.168.1.20",
        "&quot;hostname&quot;: &quot;vela&quot;"}) {
    EXPECT_TRUE(Contains(report.out, words)) << words;
  }
  const Outcome unread = RunProgram({"report", "-", "--scenario", "failing-ups", "--lang", "en"});
  EXPECT_EQ(unread.status, 3);
  EXPECT_TRUE(Contains(unread.out, ">Could not read UPS: asking for the UPS failed"));
}

TEST(Report, ReplacesAReportAndNothingElse) {
  const std::string file = test_support::OwnFolder() + "health.html", precious = file + ".zip";
  std::filesystem::remove(file);
  std::ofstream(precious) << "photos";
  const struct {
    std::string file;
    int status;
  } cases[] = {
      {file, 0}, {file, 0}, {precious, 73}, {test_support::OwnFolder(), 73}, {"/nowhere/x", 73}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram({"report", c.file, "--scenario", "healthy"});
    SCOPED_TRACE(c.file + outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_EQ(outcome.err.empty(), c.status == 0);
  }
  std::stringstream kept;
  kept << std::ifstream(precious).rdbuf();
  EXPECT_EQ(kept.str(), "photos");
}

// All of a file, less the manual's backslashes.
std::string Packaged(const std::string& file) {
  std::stringstream text;
  text << std::ifstream(VELA_PACKAGING + ("/" + file)).rdbuf();
  std::string plain = text.str();
  std::erase(plain, '\\');
  return plain;
}

TEST(Help, EveryCommandAndOptionIsInTheManualAndTheCompletions) {
  std::set<std::string> words;
  const std::regex command("\n  ([a-z]+)  "), option("(--[a-z-]+)");
  const auto collect = [&words](const std::string& help, const std::regex& form) {
    for (std::sregex_iterator found(help.begin(), help.end(), form), end; found != end; ++found)
      words.insert(found->str(1));
  };
  const std::string help = RunProgram({"--help"}).out;
  collect(help, command);
  EXPECT_EQ(words.size(), 7U);
  for (const std::string& name : std::set(words)) collect(RunProgram({name, "--help"}).out, option);
  collect(help, option);
  EXPECT_TRUE(words.contains("--why") && words.contains("--scenario"));
  for (const char* file :
       {"man/vela-health.1", "completion/vela-health.bash", "completion/_vela-health"}) {
    const std::string text = Packaged(file);
    for (const std::string& word : words) EXPECT_TRUE(Contains(text, word)) << file << " " << word;
  }
}

}  // namespace
}  // namespace host::test
