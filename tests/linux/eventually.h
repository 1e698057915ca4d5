// For what comes about by itself, if not at once.
#pragma once

#include <chrono>
#include <thread>

// Whether `holds()` becomes true within a minute.
template <typename Condition>
bool Eventually(const Condition& holds) {
  for (int tries = 0; tries < 3000; ++tries) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}
