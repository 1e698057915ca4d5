// A module that needs what no platform has.
extern "C" int VELANobodyHasThis(void);
extern "C" __attribute__((visibility("default"))) const void* GetAPITable(void) {
  return VELANobodyHasThis() != 0 ? nullptr : "";
}
