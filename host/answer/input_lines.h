// What a checker looked at, in words.
#pragma once

#include <string>
#include <vector>

#include "host/answer/explanation.h"
#include "host/text/texts.h"

namespace host {

struct InputLine {
  std::string text;
  bool decides = false;  // the finding rests on it
};

// What decided first. Elements of a list that differ in their names alone share a line.
std::vector<InputLine> FormatInputs(const Json::Value& saw, const Texts& texts);

// What decided between the first two of the findings, the most urgent first: "-1.5 beats 2: ...".
std::string ExplainOrder(const std::vector<CheckerResult>& ranked, const Texts& texts);

}  // namespace host
