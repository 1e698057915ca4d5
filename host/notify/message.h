// What hooks are told, ready to be sent.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/notify/memory.h"
#include "host/text/texts.h"

namespace host {

struct Message {
  // The words in a hook's environment: VELA_EVENT, VELA_SUBJECT, ...
  std::map<std::string, std::string> environment;
  std::string json;  // the complete answer, which a hook reads
};

// `note`: a line about this message itself; may be empty.
Message WriteMessage(const Look& look, const std::vector<ItemChange>& changes,
                     const std::string& note, const Texts& texts);
// Of another event than a change: "test", "round".
Message WriteMessage(const Look& look, const std::string& event, const std::string& subject,
                     const Texts& texts);

// Its text also says that so many earlier messages were left out.
void AddLeftOut(Message& message, int count, const Texts& texts);

}  // namespace host
