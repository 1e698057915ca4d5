// What a checker looked at, in words.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/answer/explanation.h"
#include "host/answer/parts.h"
#include "host/text/texts.h"

namespace host {

struct InputLine {
  std::string text;
  bool decides = false;  // the finding rests on it
};

// What decided first, with all that is known of its part. Elements of a list that differ in their
// names alone share a line. A code that nobody has words for is quoted.
std::vector<InputLine> FormatInputs(const CheckerResult& result, const Parts& parts,
                                    const Texts& texts);

// One element of a list that a check saw.
struct SeenElement {
  std::string kind;                           // "disk"
  std::string name;                           // "Volume 1"
  std::string title;                          // the same with all that is known of it
  std::string list;                           // where it stands in what the check saw: "disks"
  std::map<std::string, std::string> values;  // by member: "status: well", "in use: yes"
  struct Comparison {
    std::string unit;  // "bytes"
    bool low = false;
    std::string words;
  };
  std::vector<Comparison> compared;
};
std::vector<SeenElement> ListElements(const CheckerResult& result, const Parts& parts,
                                      const Texts& texts);

// The part that a check calls so: that of "1" is "volume_1", that of "usbshare1-2" is "USB 1-2",
// and the SAN has mount points. Null when the platform told of none.
const VELAPart* FindSeenPart(const std::string& name, const Parts& parts);

}  // namespace host
