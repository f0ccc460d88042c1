// A client without a socket. The test decides how many bytes the daemon's end of its stream
// accepts, and when they arrive.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {

class ScriptedClient final {
 public:
  static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

  // The daemon's end of the stream. To be called once.
  [[nodiscard]] std::unique_ptr<Stream> connect();

  // Sends bytes. They arrive at once if the daemon reads, otherwise by `deliver`.
  void send(std::string_view bytes);
  // What was sent arrives, if the daemon reads now.
  void deliver();
  // Sends no more. Reported like bytes.
  void endSending();
  // The system reports an error while the daemon reads, or while its answer waits.
  void fail();

  // How many bytes the system accepts until `take`.
  void roomIs(std::size_t bytes);
  // Every write fails from now on, at once.
  void breakWrites() { areWritesBroken_ = true; }
  // Adds all bytes that the system accepts from now on to the journal, which several clients share.
  void journalIs(std::string& journal) { journal_ = &journal; }
  // Accepts so many bytes more of an answer that waits.
  void take(std::size_t bytes);

  // What the daemon has sent, without what an earlier call returned.
  [[nodiscard]] std::string received();
  // The bytes of the answer that wait.
  [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }
  // The most bytes that have waited at any time.
  [[nodiscard]] std::size_t mostWaiting() const { return mostWaiting_; }
  // How many bytes arrived at the daemon.
  [[nodiscard]] std::size_t arrived() const { return arrived_; }
  [[nodiscard]] bool isConnected() const { return stream_ != nullptr; }
  // Whether the daemon reads now.
  [[nodiscard]] bool isRead() const { return reader_ != nullptr; }

 private:
  class DaemonEnd;

  std::size_t accept(std::string_view bytes);

  Stream* stream_ = nullptr;      // the daemon's end, while it exists
  StreamUser* reader_ = nullptr;  // while the daemon reads
  StreamUser* writer_ = nullptr;  // while bytes wait
  std::string sent_;              // and not arrived
  bool hasEnded_ = false;         // sending
  std::size_t room_ = unlimited;
  bool areWritesBroken_ = false;
  std::string waiting_;
  std::string received_;
  std::string* journal_ = nullptr;
  std::size_t mostWaiting_ = 0;
  std::size_t arrived_ = 0;
};

}  // namespace ZelAgent
