// What a platform reports of its sources within one request, and its notes.
#include "platform/status/source_status.h"

#include "platform/status/evidence.h"
#include "platform/status/notes.h"

#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace source_status {
namespace {

// A letter each: read, absent, failed, unwatched; small: alone, large: as the end of a scope; and
// + for what is accepted. The remedy is the words in brackets.
void Report(char kind, const std::string& words) {
  const char* text = words.c_str();
  const std::string bracketed = "(" + words + ")";
  const char* remedy = bracketed.c_str();
  if (kind == '+') return Accept(Source::Ups);
  if (kind == 'r') return SayRead(Source::Ups);
  if (kind == 'a') return Say(Source::Ups, State::Absent, "", "%s", text);
  if (kind == 'u') return Say(Source::Ups, State::Unwatched, remedy, "%s", text);
  if (kind == 'f') return Say(Source::Ups, State::Failed, remedy, "%s", text);
  SourceScope scope(Source::Ups);
  if (kind == 'R') scope.Read("%s", text);
  if (kind == 'N') scope.ReadWithRemark(remedy, "%s", text);
  if (kind == 'A') scope.Absent("%s", text);
  if (kind == 'U') scope.Unwatched(remedy, "%s", text);
  if (kind == 'F') scope.Failed(remedy, "%s", text);
}

std::string Describe(const VELASourceReport& report) {
  std::string words = NameState(report.state);
  for (std::uint32_t i = 0; i < report.reasonCount; ++i)
    words += std::string(" ") + report.reasons[i].text + report.reasons[i].remedy;
  return words + (report.moreReasons != 0 ? " and more" : "");
}

TEST(SourceStatus, TheWorstStandsWithItsFirstWordsAndEachReasonOfTheUnwatched) {
  std::istringstream cases(  // what is reported, and the status that it amounts to
      "=not asked;r=read;s=read;ax=absent x;Ax ay=absent x;ax r=read;ax Ry=read y;r ax=read;"
      "s Rx=read x;Rx r=read x;Rx Ry=read x;Nx r=read x(x);"
      "r fx=failed x(x);fx fy=failed x(x);Fx Fy=failed x(x);fx s ay=failed x(x);"
      "ax Fy Rz=failed y(y);fx uy=failed x(x);uy fx=failed x(x);"
      "ux=unwatched x(x);Ux Uy ux r=unwatched x(x) y(y);Rx uy=unwatched y(y);"
      "ua ub uc ua=unwatched a(a) b(b) c(c);ua ub uc ud ud=unwatched a(a) b(b) c(c) and more;"
      "ua ub uc ud fx=failed x(x);"
      "+ ux=accepted x(x);ux + r=accepted x(x);+ fx=failed x(x);+ r=read;+ ax=absent "
      "x;ux=unwatched x(x);f" +
      std::string(300, 'x') + "=failed " + std::string(239, 'x') + "(" + std::string(158, 'x'));
  for (std::string said, status; getline(cases, said, '=') && getline(cases, status, ';');) {
    VELAPlatformSourcesReset();
    std::istringstream words(said);
    for (std::string word; words >> word;) Report(word[0], word.substr(1));
    VELASourceReport reports[kSourceCount] = {};
    EXPECT_EQ(VELAPlatformSources(reports, kSourceCount - 1), kSourceCount);
    EXPECT_STREQ(reports[kSourceCount - 1].name, "") << "beyond the capacity";
    EXPECT_EQ(Describe(reports[static_cast<int>(Source::Ups)]), status) << said;
  }
}

TEST(SourceStatus, TheTimesOfASourceAddUp) {
  VELAPlatformSourcesReset();
  for (const int milliseconds : {30, 0}) {
    const SourceScope scope(Source::Network);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  VELASourceReport report = {};
  VELAPlatformSources(&report, 1);
  EXPECT_GE(report.microseconds, 30'000U);
}

TEST(Notes, AreKeptOnceInOrderUpToTheirRoomAndForgottenByAReset) {
  VELAPlatformSourcesReset();
  const std::string words(200, 'x');
  for (const int figure : {79, 80})
    AddNote(words.c_str(), words, figure / 10, figure % 10, words.c_str());
  for (int i = 1; i <= kVELANotes; ++i) AddNote("spare", "nvme" + std::to_string(i), i, 0, "");
  VELANote notes[kVELANotes] = {};
  EXPECT_EQ(CopyNotes(notes, 2), kVELANotes);
  EXPECT_EQ(std::string(notes[0].key) + notes[0].part + notes[0].command,
            std::string(31 + 95 + 159, 'x'));
  EXPECT_EQ(notes[0].figure * 10 + notes[0].mark, 79);
  EXPECT_STREQ(notes[2].key, "") << "beyond the capacity";
  CopyNotes(notes, kVELANotes);
  EXPECT_STREQ(notes[kVELANotes - 1].part, "nvme15");
  VELAPlatformSourcesReset();
  AddNote("clock", "", 0, 0, "");
  EXPECT_EQ(CopyNotes(notes, kVELANotes), 1);
  EXPECT_STREQ(notes[0].command, "") << "nothing is left of an older note";
}

TEST(Evidence, CountsTheRelatedPartsThatHaveNoRoom) {
  VELAEvidence evidence;
  for (int i = 1; i <= kVELARelatedParts + 2; ++i)
    AddRelated(evidence, std::string(20, 'r'), i == 1 ? std::string(100, 'p') : std::to_string(i));
  EXPECT_EQ(evidence.relatedCount, 24U);
  EXPECT_EQ(evidence.moreRelated, 2U);
  EXPECT_EQ(evidence.related[0].part, std::string(95, 'p'));
  EXPECT_EQ(evidence.related[23].relation, std::string(15, 'r'));
  EXPECT_STREQ(evidence.related[23].part, "24");
}

}  // namespace
}  // namespace source_status
