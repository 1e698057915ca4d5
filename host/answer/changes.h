// What differs between two answers, in the words of one language.
#pragma once

#include <string>
#include <vector>

#include "host/answer/saved_answer.h"
#include "host/text/texts.h"

namespace host {

struct Change {
  std::string about;          // "Disk 3 (bay 3, WDC WD40EFRX, serial WD-1)"
  std::string before, after;  // empty: it was not there, or is not there any more
};

// Each is empty where one of both answers is a document of "get" alone.
std::vector<Change> CompareChecks(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts);
std::vector<Change> CompareSources(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts);
// What came, went, moved or changed its state, and volumes whose use crossed their mark. Two things
// with different serial numbers are two things, and the same one keeps its number in another place.
std::vector<Change> CompareThings(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts);

}  // namespace host
