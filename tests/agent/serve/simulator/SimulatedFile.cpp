#include "tests/agent/serve/simulator/SimulatedFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"

namespace ZelAgent {
namespace {

std::optional<Configuration> configurationIn(const std::string& document) {
  try {
    return readOpenConfig(document, "document").configuration;
  } catch (const ConfigError&) {
    return std::nullopt;
  }
}

}  // namespace

void SimulatedFile::remove() const {
  std::filesystem::remove_all(path_);
}

void SimulatedFile::contentIs(const std::string& content) const {
  std::ofstream(path_, std::ios::binary) << content;
}

void SimulatedFile::documentIs(const std::string& document) {
  remove();
  contentIs(document);
  configuration_.reset();
  configuration_ = configurationIn(document);
  error_ = path_ + ":";
}

void SimulatedFile::faultIs(FileFault fault) {
  remove();
  configuration_.reset();
  error_ = path_ + ": cannot be read: ";
  switch (fault) {
    case FileFault::missing:
      break;
    case FileFault::empty:
      error_ = path_ + ":";
      contentIs("");
      break;
    case FileFault::directory:
      error_ = path_ + ": is a directory";
      std::filesystem::create_directory(path_);
      break;
    case FileFault::fifo:
      error_ = path_ + ": is a FIFO";
      ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
      break;
    case FileFault::loop:
      std::filesystem::create_symlink(path_, path_);
      break;
    case FileFault::failedRead:
      // Address 0 of a process is not readable, so the first read fails.
      std::filesystem::create_symlink("/proc/self/mem", path_);
      break;
    case FileFault::tooLarge:
      error_ = path_ + ": is larger than ";
      contentIs("");
      std::filesystem::resize_file(path_, Limits::inputFileBytes + 1);
      break;
  }
}

std::string toText(FileFault fault) {
  switch (fault) {
    case FileFault::missing:
      return "is missing";
    case FileFault::empty:
      return "is empty";
    case FileFault::directory:
      return "is a directory";
    case FileFault::fifo:
      return "is a FIFO";
    case FileFault::loop:
      return "is a link to itself";
    case FileFault::failedRead:
      return "fails to be read";
    case FileFault::tooLarge:
      break;
  }
  return "is too large";
}

}  // namespace ZelAgent
