#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZelAgent {

/// The user of a stream, which the stream notifies. A call may destroy the stream.
class StreamUser {
 public:
  /// Bytes of the client. They are valid during the call.
  virtual void received(std::string_view bytes) = 0;
  /// The client sends no more bytes. It may still read. The stream is not read any more.
  virtual void receivedEnd() = 0;
  /// All bytes of `writeLater` were written.
  virtual void wrote() = 0;
  /// Reading, or `writeLater`, has failed. The stream cannot be used any more.
  virtual void failed() = 0;

 protected:
  ~StreamUser() = default;
};

/// The connection to one client, as bytes in both directions.
///
/// It is not read at first. `received` and `receivedEnd` arrive only while it is read. One
/// `writeLater` has one result, `wrote` or `failed`. A stream that is destroyed notifies nobody,
/// and bytes that have not been written are lost.
class Stream {
 public:
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream() = default;

  virtual void startReading(StreamUser& user) = 0;
  virtual void stopReading() noexcept = 0;

  /// Writes what the system accepts at once, and returns how many bytes. 0 also after an error,
  /// which `writeLater` then reports.
  [[nodiscard]] virtual std::size_t write(std::string_view bytes) = 0;
  /// Writes all bytes as the system accepts them. The result may arrive during the call.
  /// Precondition: no other `writeLater` waits for its result.
  virtual void writeLater(std::string bytes, StreamUser& user) = 0;
  /// How many bytes of `writeLater` the system has not accepted.
  [[nodiscard]] virtual std::size_t unwritten() const noexcept = 0;
};

}  // namespace ZelAgent
