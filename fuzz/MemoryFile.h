// A regular file in memory, for code that opens its input by a path.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/Must.h"

namespace Fuzz {

class MemoryFile final {
 public:
  explicit MemoryFile(std::string_view bytes) : descriptor_(memfd_create("fuzzed", MFD_CLOEXEC)) {
    must(descriptor_ >= 0, "a file in memory can be made");
    must(write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
         "a file in memory can be written");
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor_); }

  // Other code opens the file by this path as any other regular file.
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace Fuzz
