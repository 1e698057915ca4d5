// What one health answer, as the text that goes out over HTTP, costs without HTTP.
//   http_in_process PLATFORM MODULE SCENARIO_FOLDER
#include <ctime>
#include <iostream>

#include "host/loader/host.h"

namespace {

constexpr int kAnswers = 20000;

double Microseconds() {
  timespec spent = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
  return static_cast<double>(spent.tv_sec) * 1e6 + static_cast<double>(spent.tv_nsec) / 1e3;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 64;
  const host::Host host(host::HostFiles{arguments[1], {arguments[2]}, {}});
  const auto machine = host.GetPlatform().OpenScenario(arguments[3]);
  const VELA::APIMethodRow& get = host::FindHealthMethod(host);
  std::size_t bytes = 0;
  for (int i = 0; i < kAnswers / 10; ++i) bytes += host.CallForDocument(get, machine).size();
  const double before = Microseconds();
  for (int i = 0; i < kAnswers; ++i) bytes += host.CallForDocument(get, machine).size();
  std::cout << (Microseconds() - before) / kAnswers << '\n';
  return bytes > 0 ? 0 : 1;
}
