// The three questions that the module puts to the C library rather than to the
// platform: host name, uptime and the bytes of one file. This executable exports them.
#pragma once

struct VELAOperatingSystem;

namespace host {

// From now on `answers` are asked; null: the real machine. Call it before any thread starts.
void UseOperatingSystem(const VELAOperatingSystem* answers);
// Who is asked now; never null.
const VELAOperatingSystem* GetOperatingSystem();

}  // namespace host
