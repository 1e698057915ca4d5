// get_once COUNT [SCENARIO]: COUNT requests and nothing else, for valgrind to count.
#include <cstdlib>

#include "benchmarks/get.h"
#include "platform/simulator/scenario.h"

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 1;
  simulator::Machine machine;
  if (argc > 2) machine = simulator::LoadScenario(argv[2]);
  simulator::Enter(&machine);
  for (int i = 0; i < count; ++i) Get();
}
