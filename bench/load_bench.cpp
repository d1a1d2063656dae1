// Measures loading the library into a process that already has its dependencies: load_bench LIBRARY
//
// Prints the time of dlopen in microseconds, the bytes that the library's initialisers allocate,
// and the private kilobytes of its mappings afterwards.
#include <dlfcn.h>
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

// The kilobytes of the file's mappings that are private to this process.
long privateKilobytes(const std::string& file) {
    std::ifstream maps("/proc/self/smaps");
    long sum = 0;
    bool inFile = false;
    for (std::string line; std::getline(maps, line);) {
        const size_t end = line.find_first_of(" :");
        if (end != std::string::npos && line[end] == ' ') {  // the first line of a mapping
            inFile = line.ends_with(file);
        } else if (inFile && line.starts_with("Anonymous:")) {
            sum += std::stol(line.substr(end + 1));
        }
    }
    return sum;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: load_bench LIBRARY\n");
        return 2;
    }
    const size_t heapBefore = mallinfo2().uordblks;
    const auto begin = std::chrono::steady_clock::now();
    // RTLD_NOW: the platform's loader binds every symbol at once too.
    if (dlopen(argv[1], RTLD_NOW) == nullptr) {
        std::fprintf(stderr, "load_bench: %s\n", dlerror());
        return 1;
    }
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    const size_t heap = mallinfo2().uordblks - heapBefore;
    const std::string path = argv[1];
    std::printf("%.0f %zu %ld\n", time.count(), heap,
                privateKilobytes(path.substr(path.rfind('/') + 1)));
    return 0;
}
