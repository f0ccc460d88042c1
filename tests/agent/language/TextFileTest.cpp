// Input files that would make their reader wait, or use all memory, are refused in one line.
#include "agent/language/TextFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

class TextFile : public ::testing::Test {
 protected:
  // The message without the name of the file.
  static std::string refusalOf(const std::string& file) {
    try {
      return "it was read: " + std::to_string(readTextFile(file, "a text").size()) + " bytes";
    } catch (const ConfigError& error) {
      const std::string message = error.what();
      EXPECT_EQ(message.substr(0, file.size() + 2), file + ": ");
      return message.substr(std::min(message.size(), file.size() + 2));
    }
  }
  // A file without blocks on the disk.
  std::string sparseFile(std::size_t bytes) {
    const std::string file = folder_.path("sparse");
    std::ofstream{file};
    std::filesystem::resize_file(file, bytes);
    return file;
  }

  TestFiles::TemporaryFolder folder_;
};

TEST_F(TextFile, AFifoIsRefusedAndNotWaitedFor) {
  const std::string fifo = folder_.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf(fifo), "is a FIFO; give a text");
}

TEST_F(TextFile, ADeviceWithoutEndIsRefused) {
  EXPECT_EQ(refusalOf("/dev/zero"), "is a device; give a text");
}

TEST_F(TextFile, ADirectoryIsRefused) {
  EXPECT_EQ(refusalOf(folder_.path()), "is a directory; give a text");
}

TEST_F(TextFile, AFileOfTheLargestSizeIsReadWhole) {
  EXPECT_EQ(readTextFile(sparseFile(Limits::inputFileBytes), "a text").size(),
            std::size_t{64} << 20U);
}

TEST_F(TextFile, ALargerFileIsRefused) {
  EXPECT_EQ(refusalOf(sparseFile(Limits::inputFileBytes + 1)),
            "is larger than 64 MiB; give a text");
  EXPECT_EQ(refusalOf(sparseFile(std::size_t{3} << 30U)), "is larger than 64 MiB; give a text");
}

TEST_F(TextFile, AFileThatGrewSinceItWasOpenedIsRefused) {
  const std::string file = sparseFile(10);
  const InputFile stream = openInputFile(file);
  std::filesystem::resize_file(file, Limits::inputFileBytes + 1);
  EXPECT_THROW((void)readAll(stream), InputFileError);
}

TEST_F(TextFile, ADescriptorIsNotInheritedByOtherPrograms) {
  const InputFile stream = openInputFile(sparseFile(1));
  EXPECT_EQ(fcntl(fileno(stream.get()), F_GETFD), FD_CLOEXEC);
}

TEST_F(TextFile, AFileOfTheKernelIsReadAlthoughItsSizeIsZero) {
  EXPECT_EQ(std::filesystem::file_size("/proc/self/comm"), 0U);
  EXPECT_NE(readTextFile("/proc/self/comm", "a text"), "");
}

}  // namespace
}  // namespace ZelAgent
