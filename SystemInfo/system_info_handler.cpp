#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {

// The configuration is not here: its values are read when a checker asks for them.
SystemInfoHandler::SystemInfoHandler() {
  externalVolumes_.Init();
  storage_.Init();
  ups_.Init();
  enclosures_.Init();
  systemStatus_.Init();
  eboxes_.Init();
  san_.Init();
}

}  // namespace VELA::SystemHealth
