#include "tests/support/recorded_response.h"

void VELA::APIResponse::SetSuccess(const Json::Value& answer) {
  auto* response = reinterpret_cast<RecordedResponse*>(this);
  if (response->whileSending != nullptr) response->whileSending();
  response->document = answer;
  ++response->answers;
}
