// The folder of the snapshots, as its only writer sees it.
#pragma once

#include <optional>
#include <string>

#include <json/value.h>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

// Seconds until the next snapshot, which is what the reader judges their age by.
constexpr int kSnapshotPeriod = 60;

// Makes the folder, readable for all, where it is missing. False when it cannot be
// written to; errno says why.
bool MakeSnapshotFolder();

// Replaces <source>.json by `members` and the time, boot and period of now: readers see
// the old one or the new one, never a part. False: errno says why.
bool WriteSnapshot(const std::string& source, Json::Value members);
// Of a source that is not there any more. True when there is none.
bool RemoveSnapshot(const std::string& source);
// What was last written in this boot, of whatever age; null when there is nothing readable.
Json::Value ReadLastSnapshot(const std::string& source);

// Replaces <source>.json in kMemoryFolder, where it is to be another; null keeps nothing there.
// False: errno says why.
bool WriteMemory(const std::string& source, const Json::Value& members);

// Held by one process at a time for as long as it lives, even when it is killed but stuck
// in the kernel. Nothing when another one holds it. A user who may not write into the
// folder gets one that keeps nobody away, as does one who finds no lock of his own there.
std::optional<Descriptor> TakeLock(const std::string& name);

// What to say where a lock is held by another process.
constexpr const char* kStillStuck = "an earlier look at it is still stuck in the kernel";

// On one line, ended by a line feed; indented at a terminal.
std::string PrintJson(const Json::Value& document);

}  // namespace linux_platform
