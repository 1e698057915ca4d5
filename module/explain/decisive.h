// Which of a checker's inputs its finding rests on.
#pragma once

#include <json/value.h>

namespace VELA::SystemHealth::Explain {

// Gives each object in `saw` that holds such inputs a member "decides", the list of their
// names; a comparison that decided a member "decides": true. `rule` as in the document of
// "get"; null: nothing decided.
void MarkDecisive(const Json::Value& rule, Json::Value& saw);

}  // namespace VELA::SystemHealth::Explain
