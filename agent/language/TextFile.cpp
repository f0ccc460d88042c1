#include "agent/language/TextFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "agent/language/Errors.h"
#include "agent/language/FileKind.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

InputFileError unreadable(int error) {
  return InputFileError(std::string("cannot be read: ") + std::strerror(error));
}

void needUsable(int descriptor) {
  struct stat found {};
  if (fstat(descriptor, &found) != 0) throw unreadable(errno);
  if (!S_ISREG(found.st_mode)) throw InputFileError("is " + std::string(fileKind(found.st_mode)));
  if (static_cast<std::size_t>(found.st_size) > Limits::inputFileBytes) throw inputTooLarge();
}

}  // namespace

InputFileError inputTooLarge() {
  return InputFileError("is larger than " + std::to_string(Limits::inputFileBytes >> 20U) + " MiB");
}

InputFile openInputFile(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) throw unreadable(errno);
  InputFile stream(fdopen(descriptor, "rb"), &std::fclose);
  if (!stream) {
    const int error = errno;
    close(descriptor);
    throw unreadable(error);
  }
  needUsable(descriptor);
  return stream;
}

std::string readAll(const InputFile& file) {
  std::string text;
  char block[65536];
  while (const std::size_t got = std::fread(block, 1, sizeof block, file.get())) {
    if (got > Limits::inputFileBytes - text.size()) throw inputTooLarge();
    text.append(block, got);
  }
  if (std::ferror(file.get()) != 0) throw unreadable(errno);
  return text;
}

std::string readTextFile(const std::string& file, const std::string& wanted) {
  try {
    return readAll(openInputFile(file));
  } catch (const InputFileError& error) {
    throw ConfigError(printable(file, Limits::shownTextBytes) + ": " + error.what() + "; give " +
                      wanted);
  }
}

}  // namespace ZelAgent
