// What there is, as two answers are compared by it: the parts that the platform told, and what the
// checks saw.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/answer/saved_answer.h"
#include "host/text/texts.h"

namespace host {

struct Thing {
  std::string key;     // its kind and name
  std::string serial;  // empty where nobody knows
  std::string title;   // "Disk 3 (bay 3, serial WD-1)"
  std::string place;   // "bay 3"
  // The check that looks for such things, and where in what it saw: null there is that nobody
  // knows.
  std::string check, seenIn;
  // "failed", of a part; and by the member of what was seen, "status: well", "in use: yes".
  std::map<std::string, std::string> values;
  // Of a comparison, which is made of what is there anyway: whether it was low, and its words.
  struct Comparison {
    bool low = false;
    std::string words;
  };
  std::map<std::string, Comparison> compared;  // by check and unit
};

// `withParts`: also what the platform told, and not only what the checks saw.
std::vector<Thing> ListThings(const SavedAnswer& answer, bool withParts, const Texts& texts);

}  // namespace host
