// What one round's look at the machine found, as single items that come and go, and the words
// about all of it.
#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/answer/complete_answer.h"
#include "host/text/texts.h"

namespace host {

// What an item is, the most urgent first.
enum class ItemKind { Danger, Unknown, Warning, Unread, Notice, Note };

// "danger", "unknown", "warning", "unread", "notice" or "note".
const char* ToString(ItemKind kind);

// One cause of a finding, a source that was not read, or a note. Items are the same when `group`,
// `part` and `cause` are: none of these holds a figure, a time or words of a language.
struct Item {
  ItemKind kind = ItemKind::Note;
  std::string group;  // "finding\nUPS\n<id>\n<text key>\ndanger": what is wrong
  std::string part;   // with what; empty where nobody knows
  std::string cause;  // why, and with which other parts
  std::string check;  // the check that found it; empty of what none has
  std::string line;   // "Warning: Volume 1: almost full. Volume 1 has 4 % free, limit 10 %."

  auto Key() const { return std::tie(group, part, cause); }
};

struct Look {
  bool answered = true;  // false: the machine could not be asked
  std::vector<Item> items;
  // By check what it rests on and was not read: that it finds nothing then says nothing.
  std::map<std::string, std::set<std::string>> unseen;

  std::string host, time, verdict;  // "nas", "2026-11-22T12:00:00Z", "danger"
  std::string sentence;             // with the first cause, and so with its part
  std::string advice;               // what to do; empty where nothing is
  std::vector<std::string> why, commands;
  std::string json;  // the complete answer
};

Look MakeLook(const CompleteAnswer& complete, const Texts& texts);
// `reason`: why the machine could not be asked.
Look MakeLookWithoutAnswer(const std::string& reason, const Texts& texts);

}  // namespace host
