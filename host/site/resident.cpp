#include "host/site/resident.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace host {
namespace {

// Segments that may be written hold relocated addresses: those stay.
int GiveBackPages(dl_phdr_info* library, std::size_t, void*) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  for (int i = 0; i < library->dlpi_phnum; ++i) {
    const auto& segment = library->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const std::uintptr_t start = (library->dlpi_addr + segment.p_vaddr) & ~(page - 1);
    const std::uintptr_t end = library->dlpi_addr + segment.p_vaddr + segment.p_memsz;
    void* first = reinterpret_cast<void*>(start);  // NOLINT(performance-no-int-to-ptr): as given
    madvise(first, end - start, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void GiveBackWhatStartingTook() {
  malloc_trim(0);
  dl_iterate_phdr(&GiveBackPages, nullptr);
}

}  // namespace host
