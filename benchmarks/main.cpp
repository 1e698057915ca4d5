// Runs every benchmark and prints the ratios that matter, with what they should stay below.
#include <cstdio>
#include <limits>
#include <map>
#include <string>

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace {

class Times : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
      if (run.aggregate_name == "median") seconds_[NameOf(run)] = Seconds(run);
  }

  void PrintRatio(const char* what, const std::string& one, const std::string& other,
                  double aim) const {
    const auto first = seconds_.find(one);
    const auto second = seconds_.find(other);
    if (first == seconds_.end() || second == seconds_.end()) return;
    std::printf("%-58s %8.3f  (aim: at most %g)\n", what, first->second / second->second, aim);
  }

 private:
  static std::string NameOf(const Run& run) {
    const auto& name = run.run_name;
    return name.args.empty() ? name.function_name : name.function_name + "/" + name.args;
  }

  static double Seconds(const Run& run) {
    return run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
  }

  std::map<std::string, double> seconds_;
};

// Keeps freed memory: how fast the kernel hands out pages is not what is measured.
void KeepMemory() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

}  // namespace

int main(int argc, char** argv) {
  KeepMemory();
  benchmark::Initialize(&argc, argv);
  Times times;
  benchmark::RunSpecifiedBenchmarks(&times);
  std::puts("");
  times.PrintRatio("get / jsoncpp building and writing its document", "Get", "PlainJson", 1.6);
  times.PrintRatio("100,000 volumes / 1,000", "Volumes/100000", "Volumes/1000", 130);
  times.PrintRatio("100,000 disks / 1,000", "Disks/100000", "Disks/1000", 130);
  times.PrintRatio("100,000 LUNs on 10,000 volumes / 1,000 on 100", "Luns/100000", "Luns/1000",
                   130);
  times.PrintRatio("matching 10,000 LUNs to 1,000 volumes / parsing them", "SanMatch", "SanParse",
                   0.05);
  times.PrintRatio("SAN intake / bare parse of the same text", "SanIntake", "SanParse", 1.35);
  return 0;
}
