// The resources that a process must not leak.
#include "tests/support/holdings.h"

#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ostream>

#include "tests/support/platform_seam.h"

namespace {

size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

size_t residentBytes() {
    malloc_trim(0);
    size_t pages = 0;
    std::ifstream("/proc/self/statm").ignore(64, ' ') >> pages;
    return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

Holdings::Holdings()
    : descriptors(entriesOf("/proc/self/fd")),
      threads(entriesOf("/proc/self/task")),
      heap(mallinfo2().uordblks),
      resident(residentBytes()),
      deathRecipients(static_cast<size_t>(platformSeam().deathRecipients)) {}

bool heapIsExact() {
    return getenv("GLIBC_TUNABLES") != nullptr;
}

std::ostream& operator<<(std::ostream& out, const Holdings& h) {
    return out << h.descriptors << " descriptors, " << h.threads << " threads, " << h.heap / 1024
               << " KiB in use on the heap, " << h.resident / 1024 << " KiB resident, "
               << h.deathRecipients << " death recipients";
}
