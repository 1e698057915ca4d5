#include "tests/support/recorded_response.h"

void VELA::APIResponse::SetSuccess(const Json::Value& answer) {
  auto* response = reinterpret_cast<RecordedResponse*>(this);
  response->document = answer;
  ++response->answers;
}
