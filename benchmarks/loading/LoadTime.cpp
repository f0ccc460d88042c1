// Prints the nanoseconds of processor time that the load of a shared library takes. The command
// line names the library. Measures the second load. The first load brings the file into memory.

#include <dlfcn.h>

#include <cstdio>
#include <ctime>

namespace {

double processorNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double loadingOnce(const char* path) {
  const double before = processorNanoseconds();
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  const double took = processorNanoseconds() - before;
  if (library == nullptr) {
    std::fprintf(stderr, "load_time: %s\n", dlerror());
    return -1;
  }
  dlclose(library);
  return took;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: load_time LIBRARY\n");
    return 2;
  }
  loadingOnce(argv[1]);
  const double took = loadingOnce(argv[1]);
  if (took < 0) return 1;
  std::printf("%f\n", took);
}
