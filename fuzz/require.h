#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// Stops the fuzzer when `holds` does not, so that it keeps the input.
inline void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", what.c_str());
  std::abort();
}

}  // namespace fuzz
