#include "host/answer/answer.h"

#include <gtest/gtest.h>

#include "host/answer/verdict.h"
#include "host/http/listen_address.h"
#include "host/text/failure.h"
#include "host/text/language.h"

namespace host {
namespace {

std::string Document(const std::string& rule) {
  return R"({"hostname":"nas","interfaces":[{"id":"eth0","ip":"10.0.0.2","type":"lan"}],"rule":)" +
         rule + R"(,"uptime":"1:2:3"})";
}

std::string Rule(const std::string& type, const std::string& id) {
  return R"({"description":{"description_format":"{0}","description_params":["widget:fan_fail"],)"
         R"("description_use_formatted":false},"id":")" +
         id + R"(","priority":2.2,"type":)" + type + "}";
}

Finding FindingOf(int type, const char* id) { return {static_cast<FindingType>(type), 30, id, {}}; }

TEST(Answer, EveryMemberArrives) {
  const Answer answer = ParseAnswer(Document(Rule("1", "temperature_warning")));
  EXPECT_EQ(answer.rule.type, FindingType::Warning);
  EXPECT_EQ(answer.rule.priority, 2.2);
  EXPECT_EQ(answer.rule.TextKey(), "fan_fail");
  EXPECT_EQ(answer.hostname, "nas");
  EXPECT_EQ(answer.uptime, "1:2:3");
  ASSERT_EQ(answer.interfaces.size(), 1U);
  EXPECT_EQ(answer.interfaces[0].ip, "10.0.0.2");
}

TEST(Answer, WhatIsNoAnswerIsRefusedWithTheMemberThatIsWrong) {
  const struct {
    std::string document;
    const char* words;
  } cases[] = {{"{", "not JSON"},
               {"[]", "type"},
               {"{}", "type"},
               {Document("7"), "type"},
               {Document(Rule("3", "x")), "type"},
               {Document(Rule("\"1\"", "x")), "type"},
               {Document(R"({"type":1,"priority":"2"})"), "priority"},
               {Document(R"({"type":1,"priority":2,"id":"x"})"), "description_format"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.document);
    try {
      ParseAnswer(c.document);
      ADD_FAILURE() << "accepted";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), kNoInput);
      EXPECT_NE(std::string(failure.what()).find(c.words), std::string::npos) << failure.what();
    }
  }
}

TEST(Verdict, IsDecidedByIdAndTypeTogether) {
  const std::vector<VELASourceReport> allRead = {{"UPS", 1, 0, ""}, {"SAN", 0, 0, ""}},
                                      oneFailed = {{"UPS", 1, 0, ""}, {"SAN", 2, 0, ""}};
  const struct {
    Finding finding;
    const char* verdict;
    ExitStatus read, failed;
  } cases[] = {{FindingOf(0, "san_status_warning"), "danger", kDanger, kDanger},
               {FindingOf(1, "system_health"), "warning", kAttention, kAttention},
               {FindingOf(2, "volume_usage"), "notice", kAttention, kAttention},
               {FindingOf(2, "system_health"), "well", kHealthy, kIncomplete}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.verdict);
    EXPECT_STREQ(ToString(JudgeFinding(c.finding)), c.verdict);
    EXPECT_EQ(ChooseExitStatus(c.finding, allRead), c.read);
    EXPECT_EQ(ChooseExitStatus(c.finding, oneFailed), c.failed);
  }
}

TEST(Language, TheOptionComesBeforeTheEnvironmentAndEnglishLast) {
  const struct {
    const char *locale, *language;
  } cases[] = {{"de", "de"},       {"de_AT.UTF-8", "de"}, {"FR-ca", "fr"}, {"ja_JP@x", "ja"},
               {"zh_TW", "zh-CN"}, {"zh-CN", "zh-CN"},    {"C", ""},       {"", ""},
               {"den", ""}};
  for (const auto& c : cases) EXPECT_EQ(FindLanguage(c.locale), c.language) << c.locale;

  setenv("LC_ALL", "", 1);
  setenv("LC_MESSAGES", "es_ES.UTF-8", 1);
  setenv("LANG", "de_DE.UTF-8", 1);
  EXPECT_EQ(ChooseLanguage(""), "es");
  EXPECT_EQ(ChooseLanguage("ja"), "ja");
  setenv("LC_ALL", "POSIX", 1);
  EXPECT_EQ(ChooseLanguage(""), "en");
  EXPECT_THROW(ChooseLanguage("tlh"), Failure);
}

TEST(ListenAddress, WhatIsLeftOutIsTheDefaults) {
  const struct {
    const char *text, *host;
    int port;
  } cases[] = {{"", "127.0.0.1", 8480},
               {":0", "127.0.0.1", 0},
               {"10.0.0.1", "10.0.0.1", 8480},
               {"[::1]:99", "::1", 99},
               {"[::1]", "::1", 8480},
               {"localhost:80", "localhost", 80},
               {"127.0.0.1:65535", "127.0.0.1", 65535}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const ListenAddress address = ParseListenAddress(c.text);
    EXPECT_EQ(address.host, c.host);
    EXPECT_EQ(address.port, c.port);
  }
  for (const char* bad : {"1.2.3.4:", "1.2.3.4:65536", "1.2.3.4:8o", "::1:80", "[::1", ":-1"}) {
    EXPECT_THROW(ParseListenAddress(bad), Failure) << bad;
  }
}

TEST(ListenAddress, OnlyLoopbackUnlessAllowed) {
  for (const char* remote : {"0.0.0.0", "::"}) {
    EXPECT_THROW(ListenSocket({remote, 0}, false), Failure) << remote;
    EXPECT_NO_THROW(ListenSocket({remote, 0}, true)) << remote;
  }
  const ListenSocket socket({"127.0.0.2", 0}, false);
  EXPECT_EQ(socket.Url().rfind("http://127.0.0.2:", 0), 0U);
}

}  // namespace
}  // namespace host
