// The client of a daemon against daemons that behave badly, and against signals.
#include "agent/serve/console/ControlClient.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <thread>

#include "Blinklog/FileHandle.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/serve/console/CtlCommand.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/SocketAddress.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/console/SignalledThread.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;

constexpr const char* noHookCall = "{\"status\":0,\"output\":\"  no hook call\\n\"}\n";

class ClientOfADaemon : public ::testing::Test {
 protected:
  ClientOfADaemon() : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    std::filesystem::remove(path_);
    const sockaddr_un address = socketAddressOf(path_);
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    EXPECT_EQ(listen(listener_.get(), 0), 0);  // at most one client waits to be accepted
  }

  // The one client that may wait.
  [[nodiscard]] FileHandle connectBefore() const {
    const sockaddr_un address = socketAddressOf(path_);
    FileHandle client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    return client;
  }
  [[nodiscard]] FileHandle acceptClient() const {
    FileHandle client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    EXPECT_TRUE(client.isOpen());
    return client;
  }
  static void answer(const FileHandle& client, std::string_view bytes) {
    EXPECT_EQ(::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  // The line that the client sends, with its end.
  static std::string requestOf(const FileHandle& client) {
    std::string line;
    std::array<char, 65536> block{};
    for (ssize_t got = 1; got > 0 && !line.ends_with('\n');) {
      got = recv(client.get(), block.data(), block.size(), 0);
      if (got > 0) line.append(block.data(), static_cast<std::size_t>(got));
    }
    return line;
  }

  // Sends the request to a daemon that does as `daemon` on another thread.
  Answer send(const Request& request, const std::function<void()>& daemon) {
    std::thread other(daemon);
    Answer answer;
    try {
      answer = ControlClient(path_, wait_, observer_).send(request);
    } catch (const SocketError& error) {
      error_ = error.what();
    }
    other.join();
    return answer;
  }
  // The same, with a daemon that reads the request, sends these bytes and closes.
  Answer sendFor(std::string_view bytes, bool asJson = false) {
    return send({"show", asJson}, [&] {
      const FileHandle client = acceptClient();
      EXPECT_EQ(requestOf(client), toLine({"show", asJson}));
      answer(client, bytes);
    });
  }

  // `zel-agent ctl` with a daemon that sends these bytes.
  struct Printed {
    ExitStatus status;
    std::string out;
    std::string err;
  };
  Printed ctl(std::string_view bytes, bool json) {
    std::thread daemon([&] {
      const FileHandle client = acceptClient();
      static_cast<void>(requestOf(client));
      static_cast<void>(::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
    });
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    const ExitStatus status = control({path_, {"show"}, json}, in, out, err);
    daemon.join();
    return {status, out.str(), err.str()};
  }

  std::string path_ = pathInTestFolder("s");
  std::chrono::milliseconds wait_ = std::chrono::minutes(5);
  WaitObserver observer_;
  SignalledThread caller_;
  FileHandle listener_;
  std::string error_ = "none";
  // More than the buffers of a socket hold.
  const Request large_{std::string(std::size_t{1} << 20U, 'x') + "y", false};
};

TEST_F(ClientOfADaemon, ReturnsTheStatusAndTheOutput) {
  Answer answer = sendFor("{\"status\":0,\"output\":\"a\\nb\\n\"}\n");
  EXPECT_EQ(answer.status, ExitStatus::success);
  EXPECT_EQ(answer.output, "a\nb\n");
  answer = sendFor("{\"status\":2,\"output\":\"wrong\"}\n", true);
  EXPECT_EQ(answer.status, ExitStatus::badInput);
  EXPECT_EQ(answer.output, "wrong");
  answer = sendFor("{\"status\":0,\"output\":[1,2]}\n", true);
  EXPECT_EQ(answer.output, OrderedJson::parse("[1,2]"));
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, SendsALargeRequestWholeThoughSignalsInterruptIt) {
  std::string received;
  const Answer answered = send(large_, [&] {
    const FileHandle client = acceptClient();
    caller_.interrupt();  // a part has been sent
    caller_.interrupt();  // nothing more has been sent
    received = requestOf(client);
    answer(client, noHookCall);
  });
  EXPECT_EQ(answered.output, "  no hook call\n");
  EXPECT_TRUE(received == toLine(large_)) << received.size();
}

TEST_F(ClientOfADaemon, ConnectsThoughSignalsInterruptIt) {
  const sockaddr_un address = socketAddressOf(path_);
  const FileHandle before(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(connect(before.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const Answer answered = send({"show", false}, [&] {
    caller_.interrupt();
    caller_.interrupt();
    const FileHandle first = acceptClient();
    const FileHandle client = acceptClient();
    EXPECT_EQ(requestOf(client), toLine({"show", false}));
    answer(client, noHookCall);
  });
  EXPECT_EQ(answered.output, "  no hook call\n");
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, WaitsForTheAnswerThoughSignalsInterruptIt) {
  const Answer answered = send({"show", false}, [&] {
    const FileHandle client = acceptClient();
    static_cast<void>(requestOf(client));
    caller_.interrupt();
    answer(client, std::string_view(noHookCall).substr(0, 10));
    caller_.interrupt();
    answer(client, std::string_view(noHookCall).substr(10));
  });
  EXPECT_EQ(answered.output, "  no hook call\n");
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, ReadsAnAnswerThatArrivesInSingleBytes) {
  const Answer answered = send({"show", false}, [&] {
    const FileHandle client = acceptClient();
    static_cast<void>(requestOf(client));
    for (const char& byte : std::string(noHookCall)) {
      caller_.waitUntilItWaits();
      answer(client, {&byte, 1});
    }
  });
  EXPECT_EQ(answered.output, "  no hook call\n");
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, ReadsAnAnswerThatIsCutAtAnyByte) {
  const std::string_view bytes = noHookCall;
  for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
    const Answer answered = send({"show", false}, [&] {
      const FileHandle client = acceptClient();
      static_cast<void>(requestOf(client));
      answer(client, bytes.substr(0, cut));
      caller_.waitUntilItWaits();
      answer(client, bytes.substr(cut));
    });
    EXPECT_EQ(answered.output, "  no hook call\n") << cut;
  }
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, ReadsAnAnswerThatIsLargerThanItsBuffer) {
  const std::string text(300001, 'x');
  const Answer answered = sendFor("{\"status\":0,\"output\":\"" + text + "\"}\n");
  EXPECT_TRUE(answered.output == text);
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, ReadsTheAnswerOfADaemonThatDoesNotReadTheRequest) {
  const Answer answered = send(large_, [&] {
    const FileHandle client = acceptClient();
    caller_.waitUntilItWaits();
    answer(client, "{\"status\":1,\"output\":\"too many\"}\n");
  });
  EXPECT_EQ(answered.status, ExitStatus::failure);
  EXPECT_EQ(answered.output, "too many");
}

TEST_F(ClientOfADaemon, ReportsAnEndAtEachByteOfTheAnswer) {
  const std::string_view bytes = noHookCall;
  for (std::size_t end = 0; end < bytes.size(); ++end) {
    error_ = "none";
    sendFor(bytes.substr(0, end));
    EXPECT_EQ(error_, path_ + ": the daemon closed the connection without an answer") << end;
  }
}

TEST_F(ClientOfADaemon, ReportsAConnectionThatIsReset) {
  send({"show", false}, [&] {
    const FileHandle client = acceptClient();
    caller_.waitUntilItWaits();  // closes without having read the request
  });
  EXPECT_EQ(error_, path_ + ": the daemon does not answer: Connection reset by peer");
}

TEST_F(ClientOfADaemon, ReportsThatAnotherProgramAnswers) {
  for (const char* const answer :
       {"hello\n", "\n", "{}\n", "[0]\n", "{\"status\":0}\n", "{\"output\":\"\"}\n",
        "{\"status\":3,\"output\":\"\"}\n", "{\"status\":-1,\"output\":\"\"}\n",
        "{\"status\":\"0\",\"output\":\"\"}\n", "{\"status\":0,\"output\":{}}\n",
        "{\"status\":0,\"output\":\"\"}{}\n"}) {
    error_ = "none";
    sendFor(answer);
    EXPECT_THAT(error_,
                ::testing::StartsWith(
                    path_ + ": the process that listens there is not zel-agent; it answered \""))
        << answer;
  }
}

TEST_F(ClientOfADaemon, ReportsAnErrorThatIsNoTextAsTheAnswerOfAnotherProgram) {
  sendFor("{\"status\":2,\"output\":{}}\n", true);
  EXPECT_EQ(error_, path_ +
                        ": the process that listens there is not zel-agent; it answered "
                        "\"{\"status\":2,\"output\":{}}\\x0a\"");
}

TEST_F(ClientOfADaemon, GivesUpADaemonThatSendsNothing) {
  wait_ = std::chrono::milliseconds(5);
  send({"show", false}, [] {});
  EXPECT_EQ(error_,
            path_ +
                ": the daemon has sent nothing for 0 s; the daemon may still run the command "
                "\"show\"; see --timeout");
}

TEST_F(ClientOfADaemon, GivesUpTheAnswerWhenItsObserverDoes) {
  observer_.givesUp = [] { return true; };
  FileHandle client(-1);  // stays open until the client has given up
  send({"show", false}, [&] {
    client = acceptClient();
    static_cast<void>(requestOf(client));
    caller_.interrupt();
  });
  EXPECT_EQ(error_, path_ + ": interrupted; the daemon may still run the command \"show\"");
}

TEST_F(ClientOfADaemon, GivesUpADaemonThatAcceptsNoClient) {
  const FileHandle before = connectBefore();
  wait_ = std::chrono::milliseconds(5);
  send({"show", false}, [] {});
  EXPECT_EQ(error_, path_ +
                        ": the daemon has accepted no connection for 0 s; the command was not "
                        "sent; see --timeout");
}

TEST_F(ClientOfADaemon, GivesUpTheConnectionWhenItsObserverDoes) {
  const FileHandle before = connectBefore();
  observer_.givesUp = [] { return true; };
  send({"show", false}, [this] { caller_.interrupt(); });
  EXPECT_EQ(error_, path_ + ": interrupted; the command was not sent");
}

TEST_F(ClientOfADaemon, RefusesAnAnswerThatIsTooLong) {
  send({"show", false}, [&] {
    const FileHandle client = acceptClient();
    static_cast<void>(requestOf(client));
    const std::string block(65536, 'x');
    ssize_t sent = 1;
    for (std::size_t total = 0; sent > 0 && total < 2 * Limits::answerBytes; total += block.size())
      sent = ::send(client.get(), block.data(), block.size(), MSG_NOSIGNAL);
  });
  EXPECT_EQ(error_, path_ + ": the answer is longer than 8388608 bytes");
}

TEST_F(ClientOfADaemon, ReadsAnAnswerOfTheGreatestLength) {
  std::string bytes = "{\"status\":0,\"output\":\"x\"}";
  bytes.resize(Limits::answerBytes - 1, ' ');
  const Answer answered = sendFor(bytes + '\n');
  EXPECT_EQ(answered.output, "x");
  EXPECT_EQ(error_, "none");
}

TEST_F(ClientOfADaemon, RefusesAnAnswerThatNestsDeeply) {
  const std::string opened(1'000'000, '[');
  const std::string closed(1'000'000, ']');
  sendFor("{\"status\":0,\"output\":" + opened + closed + "}\n", true);
  EXPECT_EQ(error_, path_ + ": the answer nests deeper than 100 levels");
}

TEST_F(ClientOfADaemon, PrintsAnAnswerThatIsLongerThanWhatItKeeps) {
  std::string lines;
  while (lines.size() <= Limits::answerBytes)
    lines += std::string(1000, 'x') + "\\n";
  const Printed text = ctl("{\"status\":0,\"output\":\"" + lines + "\"}\n", false);
  EXPECT_EQ(text.status, ExitStatus::success);
  EXPECT_EQ(text.err, "");
  EXPECT_EQ(text.out.size(), lines.size() / 1002 * 1001);
  std::string elements = "1";
  while (elements.size() <= Limits::answerBytes)
    elements += ",\"" + std::string(1000, 'y') + '"';
  const Printed json = ctl("{\"status\":0,\"output\":[" + elements + "]}\n", true);
  EXPECT_EQ(json.status, ExitStatus::success);
  EXPECT_TRUE(json.out == '[' + elements + "]\n");
}

TEST_F(ClientOfADaemon, RefusesALineThatIsTooLong) {
  const std::string line(Limits::answerBytes + 70000, 'x');
  const Printed text = ctl("{\"status\":0,\"output\":\"ab\\n" + line, false);
  EXPECT_EQ(text.status, ExitStatus::failure);
  EXPECT_EQ(text.err, "error: " + path_ + ": a line or a value of the answer is longer than " +
                          "8388608 bytes\n");
  EXPECT_EQ(text.out, "ab\n");
  const Printed json = ctl("{\"status\":0,\"output\":[1,\"" + line, true);
  EXPECT_EQ(json.err, text.err);
}

TEST_F(ClientOfADaemon, ReportsAnEndInsideTheOutput) {
  for (const char* const begun :
       {"{\"status\":0,\"output\":\"ab\\ncd", "{\"status\":0,\"output\":\"ab\\n\"",
        "{\"status\":0,\"output\":\"ab\\n\\"}) {
    const Printed text = ctl(begun, false);
    EXPECT_EQ(text.status, ExitStatus::failure);
    EXPECT_EQ(text.out, "ab\n");
    EXPECT_EQ(text.err, "error: " + path_ +
                            ": the daemon closed the connection before the end of the answer\n");
  }
  const Printed json = ctl("{\"status\":0,\"output\":[1,{\"a\":", true);
  EXPECT_EQ(json.err, "error: " + path_ +
                          ": the daemon closed the connection before the end of the answer\n");
}

TEST_F(ClientOfADaemon, PrintsEachKindOfJsonValueWithoutBlanks) {
  const Printed json = ctl(
      "{\"status\":0,\"output\":{\"a\": [1, -2, 2.50, true, false, null], \"b\": {}, \"c\": [[], "
      "{\"d\": \"\\n\"}]}}\n",
      true);
  EXPECT_EQ(json.out, "{\"a\":[1,-2,2.50,true,false,null],\"b\":{},\"c\":[[],{\"d\":\"\\n\"}]}\n");
  EXPECT_EQ(json.err, "");
}

TEST_F(ClientOfADaemon, ReportsOutputThatIsNoJsonAsTheAnswerOfAnotherProgram) {
  for (const char* const bytes :
       {"{\"status\":0,\"output\":[}\n", "{\"status\":0,\"output\":[]]\n"}) {
    EXPECT_THAT(ctl(bytes, true).err,
                ::testing::StartsWith("error: " + path_ +
                                      ": the process that listens there is not zel-agent"))
        << bytes;
  }
  EXPECT_THAT(ctl("{\"status\":0,\"output\":\"\\q\\n\"}\n", false).err,
              ::testing::StartsWith("error: " + path_ +
                                    ": the process that listens there is not zel-agent"));
}

TEST_F(ClientOfADaemon, PrintsNoControlsOfTheTerminal) {
  const Printed text = ctl("{\"status\":0,\"output\":\"a\\u001b[2J\\nb\\u202e\\n\"}\n", false);
  EXPECT_EQ(text.status, ExitStatus::success);
  EXPECT_EQ(text.out, "a\\x1b[2J\nb\\xe2\\x80\\xae\n");
  const Printed json = ctl("{\"status\":0,\"output\":[\"\\u009b\\u202e\"]}\n", true);
  EXPECT_EQ(json.out, "[\"\\u009b\\u202e\"]\n");
  const Printed error = ctl("{\"status\":2,\"output\":\"bad\\u001b\\nworse\"}\n", false);
  EXPECT_EQ(error.status, ExitStatus::badInput);
  EXPECT_EQ(error.err, "error: bad\\x1b\\x0aworse\n");
}

TEST_F(ClientOfADaemon, ReportsThatNoDaemonListens) {
  listener_ = FileHandle(-1);
  EXPECT_FALSE(listener_.isOpen());
  std::filesystem::remove(path_);
  try {
    static_cast<void>(ControlClient(path_, wait_).send({"show", false}));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const SocketError& error) {
    EXPECT_EQ(error.what(),
              path_ +
                  ": no daemon can be reached: No such file or directory; start one with: "
                  "zel-agent serve CONFIG --socket " +
                  path_);
  }
}

}  // namespace
}  // namespace ZelAgent
