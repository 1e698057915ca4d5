// Files, the SAN tool's stream, and the C library's part of the machine.
#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>

#include <sys/sysinfo.h>

#include <velac.h>

#include "platform/simulator/call.h"
#include "platform/simulator/simulator.h"

using simulator::Call;
using simulator::kSecurityScanFile;
using simulator::Machine;
using simulator::Simulated;
using source_status::Source;

namespace {

constexpr const char* kSanTool = "/usr/local/bin/velaiscsiep";

struct ToolOutput {
  Machine& machine;
  std::size_t position = 0;
};

ssize_t ReadOutput(void* cookie, char* buffer, std::size_t size) {
  auto& output = *static_cast<ToolOutput*>(cookie);
  const std::size_t count = output.machine.sanOutput->copy(buffer, size, output.position);
  output.position += count;
  return static_cast<ssize_t>(count);
}

int CloseOutput(void* cookie) {
  const std::unique_ptr<ToolOutput> output(static_cast<ToolOutput*>(cookie));
  --output->machine.ledger.streams;
  return 0;
}

int HostName(char* name, std::size_t size) {
  const Machine& machine = Simulated();
  if (!machine.hostName || machine.hostName->size() >= size) {
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(name, machine.hostName->c_str(), machine.hostName->size() + 1);
  return 0;
}

int SystemRecord(struct sysinfo* record) {
  const Machine& machine = Simulated();
  if (!machine.uptime) {
    errno = EFAULT;
    return -1;
  }
  record->uptime = static_cast<long>(*machine.uptime);
  return 0;
}

int OpenFile(const char* path) {
  return std::strcmp(path, kSecurityScanFile) == 0 ? Simulated().securityScan.Open() : -2;
}

}  // namespace

int VLIBCFileExist(const char* path) {
  Call call(Source::San, __func__);
  const bool exists =
      std::strcmp(path, kSanTool) == 0 && (call->sanOutput.has_value() || call->sanFails);
  if (!exists) call.Absent("no SAN service is installed");
  return exists ? 1 : 0;
}

FILE* VLIBCPopen(const char* path, const char* mode, ...) {
  Call call(Source::San, __func__);
  std::va_list arguments;
  va_start(arguments, mode);
  const char* argument = va_arg(arguments, const char*);
  va_end(arguments);
  const bool known = std::strcmp(path, kSanTool) == 0 && std::strcmp(mode, "r") == 0 &&
                     std::strcmp(argument, "--get_service_status") == 0;
  if (call->sanFails || !call->sanOutput || !known) {
    call.Fail("starting the SAN tool failed");
    return nullptr;
  }
  std::unique_ptr<ToolOutput> output(new ToolOutput{*call});
  FILE* stream = fopencookie(output.get(), "r", {ReadOutput, nullptr, nullptr, CloseOutput});
  if (stream == nullptr) throw std::bad_alloc();
  (void)output.release();  // the stream's now
  ++call->ledger.streams;
  return stream;
}

int VLIBCPclose(FILE* stream) { return std::fclose(stream); }

const VELAOperatingSystem* VELAPlatformOperatingSystem() {
  static constexpr VELAOperatingSystem kSystem = {HostName, SystemRecord, OpenFile};
  return &kSystem;
}
