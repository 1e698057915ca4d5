#include <vela_api.h>

void VELA::APIResponse::SetSuccess(const Json::Value&) {}
