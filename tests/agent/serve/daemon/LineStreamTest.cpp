// Lines to a descriptor that nobody reads. A write that waits ends the program by SIGALRM.
#include "agent/serve/daemon/LineStream.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <memory>

#include "Blinklog/FileHandle.h"
#include "tests/agent/TestFiles.h"
#include "tests/waiting/Deadline.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;

constexpr std::size_t page = 4096;

class LinesOfADaemon : public ::testing::Test {
 protected:
  LinesOfADaemon() {
    std::signal(SIGPIPE, SIG_IGN);
    alarm(static_cast<unsigned>(Waiting::Deadline().millisecondsLeft()) / 1000 + 1);
  }
  ~LinesOfADaemon() override { alarm(0); }

  // A pipe of so many pages. Its writer blocks, as those that processes share do.
  void openPipe(int pages = 1) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    use(ends);
    ASSERT_GE(fcntl(writer_.get(), F_SETPIPE_SZ, pages * static_cast<int>(page)), 0);
  }
  void openSockets() {
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    use(ends);
  }
  // The writer is a terminal that changes no bytes.
  void openTerminal() {
    std::array<int, 2> ends{};
    ASSERT_EQ(openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr), 0);
    use(ends);
    termios raw{};
    ASSERT_EQ(tcgetattr(writer_.get(), &raw), 0);
    cfmakeraw(&raw);
    ASSERT_EQ(tcsetattr(writer_.get(), TCSANOW, &raw), 0);
  }
  void use(const std::array<int, 2>& ends) {
    reader_ = FileHandle(ends[0]);
    writer_ = FileHandle(ends[1]);
    lines_ = std::make_unique<LineStream>(writer_.get());
    fcntl(reader_.get(), F_SETFL, O_NONBLOCK);
  }

  void print(const std::string& line) { *lines_ << line << std::endl; }
  // All that can be read now.
  std::string read() const {
    std::string text;
    std::array<char, 65536> block{};
    for (ssize_t got = 1; got > 0;) {
      got = ::read(reader_.get(), block.data(), block.size());
      if (got > 0) text.append(block.data(), static_cast<std::size_t>(got));
    }
    return text;
  }
  static std::string lineOf(int number) { return std::to_string(number) + std::string(1000, 'x'); }
  // Prints numbered lines that nobody reads, and then more until one that was just printed is read.
  // Each number must be read once and in order, or be in the number of dropped lines.
  void expectWholeLinesWithoutAReader() {
    int printed = 0;
    while (printed < 2000)
      print(lineOf(printed++));
    EXPECT_TRUE(lines_->good());
    std::string text = read();
    const Waiting::Deadline deadline;
    while (!text.ends_with(lineOf(printed - 1) + '\n') && !deadline.hasPassed()) {
      print(lineOf(printed++));
      text += read();
    }
    const std::string warning = "warning: lines dropped before this one: ";
    std::istringstream got(text);
    int accounted = 0;
    int dropped = 0;
    for (std::string line; std::getline(got, line);) {
      if (line.starts_with(warning)) {
        const int lines = std::stoi(line.substr(warning.size()));
        dropped += lines;
        accounted += lines;
      } else {
        ASSERT_EQ(line, lineOf(accounted++));
      }
    }
    EXPECT_EQ(accounted, printed);
    EXPECT_GT(dropped, 0);
  }

  FileHandle reader_{-1};
  FileHandle writer_{-1};
  std::unique_ptr<LineStream> lines_;
};

TEST_F(LinesOfADaemon, AreWrittenWhenTheyAreFlushed) {
  openPipe();
  *lines_ << "one\ntwo";
  EXPECT_EQ(read(), "");
  *lines_ << std::endl;
  EXPECT_EQ(read(), "one\ntwo\n");
}

TEST_F(LinesOfADaemon, AreWrittenAtTheEnd) {
  openPipe();
  *lines_ << "error: the last line\n";
  lines_.reset();
  EXPECT_EQ(read(), "error: the last line\n");
}

TEST_F(LinesOfADaemon, AreDroppedAndCountedWhenThePipeIsFull) {
  openPipe();
  print(std::string(page - 1, 'x'));
  for (const char* const line : {"a", "b", "c"})
    print(line);
  EXPECT_TRUE(lines_->good());
  EXPECT_EQ(read(), std::string(page - 1, 'x') + "\n");
  print("d");
  print("e");
  EXPECT_EQ(read(), "warning: lines dropped before this one: 3\nd\ne\n");
}

TEST_F(LinesOfADaemon, AreCountedInALineWithTheStartOfTheLog) {
  openPipe();
  lines_ = std::make_unique<LineStream>(writer_.get(), [] { return "<4>"; });
  print(std::string(page - 1, 'x'));
  print("dropped");
  (void)read();
  print("<6>next");
  EXPECT_EQ(read(), "<4>warning: lines dropped before this one: 1\n<6>next\n");
}

TEST_F(LinesOfADaemon, AreWholeOnAPipeThatNobodyReads) {
  openPipe(16);
  expectWholeLinesWithoutAReader();
}

TEST_F(LinesOfADaemon, AreWholeOnATerminalThatNobodyReads) {
  openTerminal();
  expectWholeLinesWithoutAReader();
}

TEST_F(LinesOfADaemon, AreWholeOnASocketThatNobodyReads) {
  openSockets();
  expectWholeLinesWithoutAReader();
}

TEST_F(LinesOfADaemon, AreCompletedBeforeTheNextLine) {
  openPipe(2);
  const std::string longLine(3 * page, 'x');
  print(longLine);
  print("dropped");
  const std::string beginning = read();
  EXPECT_LT(beginning.size(), longLine.size());
  print("next");
  EXPECT_EQ(beginning + read(), longLine + "\nwarning: lines dropped before this one: 1\nnext\n");
}

TEST_F(LinesOfADaemon, LeaveThePipeBlockingForOtherProcesses) {
  openPipe();
  print("line");
  EXPECT_EQ(fcntl(writer_.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(LinesOfADaemon, AreAppendedToAFile) {
  const std::string path = writeFile("log", "before\n");
  const FileHandle file(open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
  LineStream(file.get()) << std::string(3 * page, 'x') << std::endl << "after" << std::endl;
  EXPECT_EQ(readFile(path), "before\n" + std::string(3 * page, 'x') + "\nafter\n");
}

TEST_F(LinesOfADaemon, FollowWhatIsInAFile) {
  const std::string path = writeFile("log", "");
  const FileHandle file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(::write(file.get(), "before\n", 7), 7);
  LineStream(file.get()) << "after" << std::endl;
  EXPECT_EQ(readFile(path), "before\nafter\n");
}

TEST_F(LinesOfADaemon, FailWhereNobodyCanEverReadThem) {
  openPipe();
  reader_ = FileHandle(-1);
  print("lost");
  EXPECT_FALSE(lines_->good());
  const FileHandle full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  EXPECT_FALSE((LineStream(full.get()) << "lost" << std::endl).good());
  const FileHandle unwritable(open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE((LineStream(unwritable.get()) << "lost" << std::endl).good());
}

}  // namespace
}  // namespace ZelAgent
