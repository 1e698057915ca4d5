// platform_costs: whole answers and the platform's reads beside the same reads done bare, in
// alternation, and the start of a program from a small and from a large process.
// platform_costs SIDE COUNT [MACHINE]: one side only, for strace to count; over that machine of
// tests/fixtures/linux/machines, made of small files.
// platform_costs held: memory and descriptors over 100,000 whole answers.
// platform_costs grown: the storage with 16,000 mounts beside 1,000, and with 2,000 volumes of RAID
// controllers over as many hidden disks beside 125.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/linux/sides.h"
#include "tests/linux/machine_tree.h"

namespace {

using Clock = std::chrono::steady_clock;
using Side = void (*)();

const std::map<std::string, Side> kSides = {
    {"answer", RequestAnswer},   {"platform", RequestPlatform}, {"bare-answer", BareAnswer},
    {"network", RequestNetwork}, {"bare-network", BareNetwork}, {"storage", RequestStorage},
    {"spawn", RequestSpawn},     {"bare-storage", BareStorage}, {"fork", BareFork}};

double Microseconds(Side side) {
  const auto start = Clock::now();
  side();
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double Median(std::vector<double>& times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// Alternating, so that whatever else the machine does meets both.
void Compare(const char* what, Side one, Side other, int rounds) {
  std::vector<double> first, second;
  for (int i = 0; i < rounds; ++i) {
    first.push_back(Microseconds(one));
    second.push_back(Microseconds(other));
  }
  const double a = Median(first), b = Median(second);
  std::printf("%-46s %9.1f us / %9.1f us = %6.3f\n", what, a, b, a / b);
}

// A process of a given resident size that measures a side whenever it is told to.
class Sized {
 public:
  Sized(std::size_t size, Side side) {
    int tell[2], told[2];
    if (pipe2(tell, O_CLOEXEC) != 0 || pipe2(told, O_CLOEXEC) != 0) std::abort();
    if (fork() == 0) Serve(size, side, tell[0], told[1]);
    tell_ = tell[1];
    told_ = told[0];
  }
  ~Sized() {
    char stop = 0;
    if (write(tell_, &stop, 1) != 1) std::abort();
    wait(nullptr);
  }
  Sized(const Sized&) = delete;
  Sized& operator=(const Sized&) = delete;

  double Measure() const {
    char go = 1;
    double time = 0;
    if (write(tell_, &go, 1) != 1 || read(told_, &time, sizeof time) != sizeof time) std::abort();
    return time;
  }

 private:
  [[noreturn]] static void Serve(std::size_t size, Side side, int tell, int told) {
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    madvise(memory, size, MADV_NOHUGEPAGE);  // as a heap that grew bit by bit
    std::memset(memory, 1, size);
    for (char go = 0; read(tell, &go, 1) == 1 && go == 1;) {
      const double time = Microseconds(side);
      if (write(told, &time, sizeof time) != sizeof time) break;
    }
    _exit(0);
  }

  int tell_ = -1, told_ = -1;
};

void CompareSizes(const char* what, Side side, int rounds) {
  const Sized small(std::size_t{8} << 20, side), large(std::size_t{1} << 30, side);
  std::vector<double> first, second;
  for (int i = 0; i < rounds; ++i) {
    first.push_back(large.Measure());
    second.push_back(small.Measure());
  }
  const double a = Median(first), b = Median(second);
  std::printf("%-46s %9.1f us / %9.1f us = %6.3f\n", what, a, b, a / b);
}

// What a process holds after so many whole answers: they should not show.
void Hold() {
  int asked = 0;
  for (const int count : {100, 1000, 10'000, 50'000, 100'000}) {
    for (; asked < count; ++asked) RequestAnswer();
    const auto descriptors =
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    std::ifstream pages("/proc/self/statm");
    long size = 0, resident = 0;
    pages >> size >> resident;
    std::printf("after %6d answers: %6ld KiB resident, %2ld descriptors\n", count,
                resident * sysconf(_SC_PAGESIZE) / 1024, static_cast<long>(descriptors) - 1);
  }
}

// Volumes on devices that are gone, each mounted within the one before.
std::string MakeMountTable(int volumes) {
  std::string table = "1 0 0:99 / / rw - tmpfs tmpfs rw\n";
  for (int i = 2; i < volumes + 2; ++i)
    table += std::to_string(i) + " " + std::to_string(i - 1) + " 600:" + std::to_string(i) +
             " / /volume" + std::to_string(i) + " rw - ext4 /dev/x rw\n";
  return table;
}

void CompareMountTables() {
  const MachineTree machine;
  const std::string few = MakeMountTable(1000), many = MakeMountTable(16'000);
  std::vector<double> first, second;
  for (int i = 0; i < 5; ++i) {  // in alternation, so that each is parsed each time
    machine.Mounts(many);
    first.push_back(Microseconds(RequestStorage));
    machine.Mounts(few);
    second.push_back(Microseconds(RequestStorage));
  }
  const double a = Median(first), b = Median(second);
  std::printf("16,000 volumes / 1,000: %.0f us / %.0f us = %.1f (aim: at most 24)\n", a, b, a / b);
}

// "sda" to "sdz", "sdaa" and so on.
std::string NameDisk(int number) {
  std::string letters;
  for (++number; number > 0; number = (number - 1) / 26)
    letters.insert(letters.begin(), static_cast<char>('a' + (number - 1) % 26));
  return "sd" + letters;
}

// The storage of a controller with so many volumes over as many disks, all of which smartd watches.
double MeasureHiddenDisks(int count) {
  const MachineTree machine;
  machine.Mounts("1 0 0:99 / / rw - tmpfs tmpfs rw\n");
  machine.Write("/sys/class/scsi_host/host0/proc_name", "megaraid_sas\n");
  machine.Write("/proc/sys/kernel/random/boot_id", "this-boot\n");
  std::string drives;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    machine.Disk(NameDisk(i), "pci0/host0/target0:0:" + number + "/0:0:" + number + ":0", 600, i);
    drives += std::string(i > 0 ? "," : "") + R"({"type": "scsi", "current": true, "serial": "S)" +
              number + "\"}";
  }
  machine.Write("/run/vela-platform/smart.json",
                R"({"boot_id": "this-boot", "period": 60, "smartd": "running", "written": )" +
                    std::to_string(std::time(nullptr)) + ", \"drives\": [" + drives + "]}");
  std::vector<double> times;
  for (int i = 0; i < 5; ++i) times.push_back(Microseconds(RequestStorage));
  return Median(times);
}

void CompareHiddenDisks() {
  const double few = MeasureHiddenDisks(125), many = MeasureHiddenDisks(2000);
  std::printf("2,000 hidden disks / 125: %.0f us / %.0f us = %.1f (aim: at most 24)\n", many, few,
              many / few);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "held") == 0) {
    Hold();
    return 0;
  }
  if (argc == 2 && std::strcmp(argv[1], "grown") == 0) {
    CompareMountTables();
    CompareHiddenDisks();
    return 0;
  }
  if (argc >= 3 && kSides.contains(argv[1])) {
    const auto machine = argc > 3 ? std::make_unique<MachineTree>(argv[3]) : nullptr;
    for (int i = std::atoi(argv[2]); i > 0; --i) kSides.at(argv[1])();
    return 0;
  }
  if (argc != 1) {
    std::fprintf(stderr, "usage: platform_costs [held | grown | SIDE COUNT [MACHINE]]; the sides:");
    for (const auto& [name, side] : kSides) std::fprintf(stderr, " %s", name.c_str());
    std::fprintf(stderr, "\n");
    return 64;
  }
  const auto compareAnswers = [](const std::string& machine) {
    Compare(("whole answer, " + machine + ": request / bare").c_str(), RequestAnswer, BareAnswer,
            2001);
    Compare(("  of it the platform, " + machine + " / bare").c_str(), RequestPlatform, BareAnswer,
            2001);
  };
  compareAnswers("this machine");
  {
    const MachineTree machine("eight-bays");
    compareAnswers("eight bays");
  }
  Compare("network: request / bare dumps", RequestNetwork, BareNetwork, 2001);
  Compare("storage: request / bare reads", RequestStorage, BareStorage, 2001);
  CompareSizes("starting a program: 1 GiB / 8 MiB resident", RequestSpawn, 1001);
  CompareSizes("fork and exec, for comparison: 1 GiB / 8 MiB", BareFork, 41);
}
