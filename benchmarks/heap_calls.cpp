#include "benchmarks/heap_calls.h"

#include <algorithm>
#include <cstdlib>

#include <malloc.h>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
}

namespace {

HeapUse use;

void* Taken(void* memory) {
  ++use.calls;
  use.live += malloc_usable_size(memory);
  use.peak = std::max(use.peak, use.live);
  return memory;
}

}  // namespace

HeapUse HeapUsed() { return use; }
void ResetPeak() { use.peak = use.live; }

// operator new ends here as well.
#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) { return Taken(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return Taken(__libc_calloc(count, size)); }

void* realloc(void* memory, std::size_t size) {
  use.live -= malloc_usable_size(memory);
  return Taken(__libc_realloc(memory, size));
}

void free(void* memory) {
  use.live -= malloc_usable_size(memory);
  __libc_free(memory);
}
}
#pragma GCC visibility pop
