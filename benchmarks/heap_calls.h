// Counts the heap calls of this process: malloc, calloc, realloc and operator new.
#pragma once

#include <cstddef>

struct HeapUse {
  std::size_t calls;
  std::size_t live;  // bytes in use now
  std::size_t peak;  // most bytes in use since the last ResetPeak
};

HeapUse HeapUsed();
void ResetPeak();
