#include "agent/language/TextFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

[[noreturn]] void failToRead(const std::string& file, int error, const std::string& wanted) {
  throw ConfigError(printable(file, 1000) + ": cannot be read: " + std::strerror(error) +
                    "; give " + wanted);
}

}  // namespace

std::string readTextFile(const std::string& file, const std::string& wanted) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"),
                                                               &std::fclose);
  if (!stream) failToRead(file, errno, wanted);
  std::string text;
  char block[65536];
  while (const std::size_t got = std::fread(block, 1, sizeof block, stream.get())) {
    text.append(block, got);
  }
  if (std::ferror(stream.get()) != 0) failToRead(file, errno, wanted);
  return text;
}

}  // namespace ZelAgent
