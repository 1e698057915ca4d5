// Whether a disk belongs inside the machine, by what udev knows of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

enum class DiskClass { Internal, Usb, SdCard, Esata };

// What decides. Not "removable": hot-plug bays say 1, USB disks say 0.
struct DiskFacts {
  bool usb = false;         // connected by USB
  bool memoryCard = false;  // an mmc device of type SD (eMMC is type MMC)
  bool cardReader = false;  // USB with a flash-drive property, or VELA_SDCARD=1
  bool ata = false;
  bool markedEsata = false;     // VELA_BAY=esata, its port in `esata.ports`, or UDISKS_SYSTEM=0
  bool mountedAsMedia = false;  // below /media or /run/media
  bool externalPort = false;    // its controller says so
  bool carriesSystem = false;   // holds /, /boot, /var or swap

  bool offline = false;  // a SCSI disk that the kernel has given up: all that is asked of it fails

  std::string path = {};  // its folder in /sys
  // Where it sits, for ordering: the numbers of its USB chain or ATA port, then its LUN.
  std::string place = {};
};

// A disk that carries the system is internal wherever it is connected.
DiskClass ClassifyDisk(const DiskFacts& facts);

// Whether the AHCI controller marks the port of the disk whose folder in /sys is `path` as one that
// leads out of the machine.
bool HasExternalPort(std::string_view path);

// Whether a device's folder in /sys lies below a root hub: "/usb2/".
bool HasUsbHub(std::string_view path);

// The facts that /sys and udev's database hold about the whole disk `name`.
// `esataPorts`: ATA port numbers.
DiskFacts ReadDiskFacts(const std::string& name, const std::vector<std::string_view>& esataPorts);

// The numbers in `path`, each padded so that comparing two such keys compares the numbers.
std::string ToSortKey(std::string_view path);

}  // namespace linux_platform
