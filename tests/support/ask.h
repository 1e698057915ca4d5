// One request, from its machine to all that can be seen of it.
#pragma once

#include <string>

#include <gtest/gtest.h>
#include <vela_api.h>

#include "platform/simulator/machine.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_response.h"

extern "C" const VELA::APIMethodRow* GetAPITable();

namespace VELA::SystemHealth {

// The document and the log as one text.
inline std::string Ask(simulator::Machine& machine) {
  RecordedLog().clear();
  simulator::Enter(&machine);
  RecordedResponse response;
  GetAPITable()[0].handler(nullptr, response.AsResponse());
  simulator::Enter(nullptr);
  return response.document.toStyledString() + testing::PrintToString(RecordedLog());
}

}  // namespace VELA::SystemHealth
