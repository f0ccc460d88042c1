// The stream over a socket of the event loop.
#include "agent/serve/daemon/PipeStream.h"

#include <gmock/gmock.h>

#include <csignal>
#include <functional>

#include "tests/agent/serve/daemon/SocketPair.h"

namespace ZelAgent {
namespace {

constexpr std::size_t most = 100000;  // more than the buffers of the sockets hold

// Writes what it is notified of into a journal.
class StreamJournal final : public StreamUser {
 public:
  void received(std::string_view bytes) override { add("received " + std::string(bytes)); }
  void receivedEnd() override { add("end"); }
  void wrote() override { add("wrote"); }
  void failed() override { add("failed"); }

  // What was added since the last call.
  std::string text() { return std::exchange(text_, {}); }

  std::function<void()> then = [] {};

 private:
  void add(const std::string& line) {
    text_ += line + '\n';
    then();
  }

  std::string text_;
};

class OneStream : public ::testing::Test {
 protected:
  OneStream() { std::signal(SIGPIPE, SIG_IGN); }

  void runLoop() {
    for (int round = 0; round < 3; ++round)
      uv_run(loop_.get(), UV_RUN_NOWAIT);
  }
  // What the client receives until nothing more arrives.
  std::string receiveAll(std::size_t piece) {
    std::string all;
    for (std::string bytes = sockets_.receive(piece); !bytes.empty();
         bytes = sockets_.receive(piece)) {
      all += bytes;
      runLoop();
    }
    return all;
  }
  // Bytes of which each thousand is different.
  static std::string manyBytes(std::size_t size) {
    std::string bytes;
    for (int number = 0; bytes.size() < size; ++number)
      bytes += std::to_string(number) + ' ';
    return bytes.substr(0, size);
  }
  // Writes until the system accepts nothing more.
  std::size_t fill() { return stream_->write(manyBytes(most)); }

  EventLoop loop_;
  SocketPair sockets_{loop_};
  StreamJournal journal_;
  std::unique_ptr<PipeStream> stream_ = sockets_.stream();
};

TEST_F(OneStream, ReportsBytesInTheirOrderWhileItIsRead) {
  stream_->startReading(journal_);
  sockets_.send("one");
  runLoop();
  sockets_.send("two");
  runLoop();
  EXPECT_EQ(journal_.text(), "received one\nreceived two\n");
}

TEST_F(OneStream, ReportsNothingUntilItIsRead) {
  sockets_.send("one");
  runLoop();
  EXPECT_EQ(journal_.text(), "");
  stream_->startReading(journal_);
  runLoop();
  EXPECT_EQ(journal_.text(), "received one\n");
  stream_->stopReading();
  sockets_.send("two");
  sockets_.endSending();
  runLoop();
  EXPECT_EQ(journal_.text(), "");
  stream_->startReading(journal_);
  runLoop();
  EXPECT_EQ(journal_.text(), "received two\nend\n");
}

TEST_F(OneStream, CanBeWrittenAfterTheClientHasEndedSending) {
  stream_->startReading(journal_);
  sockets_.endSending();
  runLoop();
  EXPECT_EQ(journal_.text(), "end\n");
  EXPECT_EQ(stream_->write("answer"), 6U);
  EXPECT_EQ(sockets_.receive(100), "answer");
}

TEST_F(OneStream, WritesAtOnceOnlyWhatTheSystemAccepts) {
  const std::size_t written = fill();
  EXPECT_GT(written, 0U);
  EXPECT_LT(written, most);
  EXPECT_EQ(stream_->write("more"), 0U);
  EXPECT_EQ(stream_->unwritten(), 0U);
  EXPECT_EQ(receiveAll(4096), manyBytes(written));
}

TEST_F(OneStream, WritesTheRestAsTheClientReadsInPiecesOfAnySize) {
  for (const std::size_t piece : {1U, 7U, 500U, 4096U, 100000U}) {
    const std::string bytes = manyBytes(piece == 1 ? most / 5 : most);
    const std::size_t written = stream_->write(bytes);
    stream_->writeLater(bytes.substr(written), journal_);
    EXPECT_EQ(receiveAll(piece), bytes) << piece;
    EXPECT_EQ(journal_.text(), "wrote\n");
    EXPECT_EQ(stream_->unwritten(), 0U);
  }
}

TEST_F(OneStream, CountsTheBytesThatTheSystemHasNotAccepted) {
  fill();
  stream_->writeLater("later", journal_);
  runLoop();
  EXPECT_EQ(stream_->unwritten(), 5U);
  EXPECT_EQ(journal_.text(), "");
  receiveAll(most);
  EXPECT_EQ(stream_->unwritten(), 0U);
  EXPECT_EQ(journal_.text(), "wrote\n");
}

TEST_F(OneStream, FailsOnceWhenAClientThatIsGoneIsWrittenTo) {
  sockets_.close();
  EXPECT_EQ(stream_->write("answer"), 0U);
  stream_->writeLater("answer", journal_);
  runLoop();
  EXPECT_EQ(journal_.text(), "failed\n");
}

TEST_F(OneStream, FailsOnceWhenTheClientLeavesWhileBytesWait) {
  fill();
  stream_->writeLater("later", journal_);
  runLoop();
  sockets_.close();
  runLoop();
  EXPECT_EQ(journal_.text(), "failed\n");
}

TEST_F(OneStream, FailsWhenTheClientLeavesWithBytesThatItHasNotRead) {
  stream_->startReading(journal_);
  EXPECT_EQ(stream_->write("answer"), 6U);
  sockets_.close();
  runLoop();
  EXPECT_EQ(journal_.text(), "failed\n");
}

TEST_F(OneStream, FailsDuringTheWriteWhenItIsNotConnected) {
  PipeStream unconnected(makeHandle<uv_pipe_t>(loop_, nullptr, uv_pipe_init, 0));
  unconnected.writeLater("answer", journal_);
  EXPECT_EQ(journal_.text(), "failed\n");
}

TEST_F(OneStream, NotifiesNobodyWhenItIsDestroyed) {
  stream_->startReading(journal_);
  fill();
  stream_->writeLater("later", journal_);
  sockets_.send("request");
  stream_.reset();
  runLoop();
  EXPECT_EQ(journal_.text(), "");
  receiveAll(most);
}

TEST_F(OneStream, MayBeDestroyedByEachNotice) {
  journal_.then = [this] { stream_.reset(); };
  stream_->startReading(journal_);
  sockets_.send("request");
  sockets_.endSending();
  runLoop();
  EXPECT_EQ(journal_.text(), "received request\n");
}

TEST_F(OneStream, MayBeDestroyedByTheNoticeThatItsBytesAreWritten) {
  journal_.then = [this] { stream_.reset(); };
  stream_->writeLater("answer", journal_);
  runLoop();
  EXPECT_EQ(journal_.text(), "wrote\n");
  EXPECT_EQ(sockets_.receive(100), "answer");
}

}  // namespace
}  // namespace ZelAgent
