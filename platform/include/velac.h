// The appliance's C interface: error state, network, files, processes, hardware,
// UPS, expansion units, mounted volumes and high availability. Every function may
// be called from several threads at once; none hands over ownership but where its
// paired release call is named.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#pragma GCC visibility push(default)

// The records are the appliance's own plain memory. Fields that the module uses
// have names, the rest is padding, and the compiler holds every offset.

struct VLIB_NET_INTERFACE {
  char name[132];  // NUL-terminated; what follows the NUL is the platform's
};
static_assert(sizeof(VLIB_NET_INTERFACE) == 132);

struct VELA_NETIF_INFO {
  char reserved0[30];
  char address[42];  // NUL-terminated text
};
static_assert(sizeof(VELA_NETIF_INFO) == 72);
static_assert(offsetof(VELA_NETIF_INFO, address) == 30);

struct VELA_SYS_STATUS {
  alignas(8) unsigned char opaque[1024];  // only VELAIsComponentFail looks inside
};
static_assert(sizeof(VELA_SYS_STATUS) == 1024);

struct VELA_UPS_INFO {
  std::int32_t enabled;  // 1: UPS support is switched on
  char reserved0[12];
  std::int32_t state;  // 2: on battery, 3: battery low
  char reserved1[12];
  std::uint8_t connected;  // non-zero: a UPS answers
  char reserved2[967];
};
static_assert(sizeof(VELA_UPS_INFO) == 1000);
static_assert(offsetof(VELA_UPS_INFO, enabled) == 0);
static_assert(offsetof(VELA_UPS_INFO, state) == 16);
static_assert(offsetof(VELA_UPS_INFO, connected) == 32);

struct VELA_EBOX_INFO {
  char reserved0[4160];
  std::int32_t slotIndex;  // the unit's bit in the fan mask of component 5
  std::uint32_t unitNumber;
  char reserved1[16];
  unsigned char context[8272];  // private; both functions below receive it
  const char* (*name)(void* context);
  char reserved2[56];
  // 0 and 255: unknown. Otherwise bit n of `word` is set while supply n+1 works.
  int (*power)(void* context, unsigned* word);
  char reserved3[120];
  VELA_EBOX_INFO* next;
};
static_assert(sizeof(VELA_EBOX_INFO) == 12656);
static_assert(offsetof(VELA_EBOX_INFO, slotIndex) == 4160);
static_assert(offsetof(VELA_EBOX_INFO, unitNumber) == 4164);
static_assert(offsetof(VELA_EBOX_INFO, context) == 4184);
static_assert(offsetof(VELA_EBOX_INFO, name) == 12456);
static_assert(offsetof(VELA_EBOX_INFO, power) == 12520);
static_assert(offsetof(VELA_EBOX_INFO, next) == 12648);

struct VELA_MOUNT_VOL_INFO {
  char reserved0[52];
  char name[36];            // NUL-terminated unless all 36 bytes are in use
  std::uint64_t freeSize;   // bytes that a user can still write
  std::uint64_t totalSize;  // bytes
  char reserved1[8];
  VELA_MOUNT_VOL_INFO* next;
};
static_assert(sizeof(VELA_MOUNT_VOL_INFO) == 120);
static_assert(offsetof(VELA_MOUNT_VOL_INFO, name) == 52);
static_assert(offsetof(VELA_MOUNT_VOL_INFO, freeSize) == 88);
static_assert(offsetof(VELA_MOUNT_VOL_INFO, totalSize) == 96);
static_assert(offsetof(VELA_MOUNT_VOL_INFO, next) == 112);

struct FS_INFO;  // opaque; released by FSInfoFree

extern "C" {

// --- Error state: of the calling thread, set by the last platform call that failed.
unsigned VLIBCErrGet(void);
const char* VLIBCErrorGetFile(void);  // never null
int VLIBCErrorGetLine(void);

// --- Network.
// Fills at most `count` entries; `mask` selects the interfaces (18: the ones that
// carry the appliance's addresses). Returns the number filled, negative on failure.
int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int mask);
// Fills the zeroed `record`. Negative on failure.
int VELANetIFGetInfoEx(const char* name, int flags, VELA_NETIF_INFO* record);

// --- Files and processes.
// Copies the value of `key` in the key="value" file `path`. Negative when there is
// no such file or key, or when the value and its NUL do not fit into `size` bytes.
int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int flags);
int VLIBCFileExist(const char* path);  // non-zero when it exists
// Runs a program without a shell, its arguments closed by a null pointer, and
// returns the stream of its standard output; null when it cannot be started.
FILE* VLIBCPopen(const char* path, const char* mode, ...);
int VLIBCPclose(FILE* stream);

// --- Hardware.
int VLIBCMaxDiskGet(void);  // internal disk bays
int VELASysStatusGet(VELA_SYS_STATUS* record);
// 1: failed. Components: 1 system fan, 4 power, 5 expansion-unit fans, 6 processor
// fan. For 4 and 5 the bits from 8 up in `detail` name the failed supplies or units.
int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail);
int VELARedundantPowerSupport(void);     // non-zero on models with redundant supplies
int VELAHWSysTempWarning(int* state);    // 0 on success; `state` 1 is a warning
int VELAServiceIsHttpDefaultConf(void);  // negative on error, positive on the default configuration
int VELAUPSInfoGet(VELA_UPS_INFO* record);  // 0 on success

// --- Expansion units. -1 on failure, otherwise `list` is a linked list or null.
int VELAEBoxInfoEnum(VELA_EBOX_INFO** list);
void VELAEBoxInfoEnumFree(VELA_EBOX_INFO* list);  // accepts null

// --- Volumes.
// The free share below which the volume at `path` warns: 0.05 is five per cent.
float VELAVolumeCapWarnPctGet(const char* path);
void FSInfoFree(FS_INFO* info);  // accepts null
// Mounted external volumes of one class (4: USB, card readers included; 8: eSATA).
VELA_MOUNT_VOL_INFO* VELAMountVolAllEnum(int reserved0, int volumeClass, int reserved1);
void VELAMountVolInfoFree(VELA_MOUNT_VOL_INFO* list);  // accepts null
int VELAUsbIsCardreader(const char* name);             // takes the user-facing name

// --- High availability.
int VELAHAIsRunning(void);
int VELAHAGetOverviewStatusDL(char* buffer, int size);
}

#pragma GCC visibility pop
