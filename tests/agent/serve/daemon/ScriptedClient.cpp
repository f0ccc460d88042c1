#include "tests/agent/serve/daemon/ScriptedClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace ZelAgent {

class ScriptedClient::DaemonEnd final : public Stream {
 public:
  explicit DaemonEnd(ScriptedClient& client) : client_(client) { client_.stream_ = this; }
  DaemonEnd(const DaemonEnd&) = delete;
  DaemonEnd& operator=(const DaemonEnd&) = delete;
  ~DaemonEnd() override {
    client_.stream_ = nullptr;
    client_.reader_ = nullptr;
    client_.writer_ = nullptr;
  }

  void startReading(StreamUser& user) override {
    EXPECT_EQ(client_.reader_, nullptr) << "it is read already";
    client_.reader_ = &user;
  }
  void stopReading() noexcept override { client_.reader_ = nullptr; }

  [[nodiscard]] std::size_t write(std::string_view bytes) override {
    return client_.areWritesBroken_ ? 0 : client_.accept(bytes);
  }
  void writeLater(std::string bytes, StreamUser& user) override {
    EXPECT_EQ(client_.writer_, nullptr) << "an answer waits already";
    if (client_.areWritesBroken_) return user.failed();
    client_.waiting_ = std::move(bytes);
    client_.mostWaiting_ = std::max(client_.mostWaiting_, client_.waiting_.size());
    client_.writer_ = &user;
  }
  [[nodiscard]] std::size_t unwritten() const noexcept override { return client_.waiting_.size(); }

 private:
  ScriptedClient& client_;
};

std::unique_ptr<Stream> ScriptedClient::connect() {
  return std::make_unique<DaemonEnd>(*this);
}

void ScriptedClient::send(std::string_view bytes) {
  sent_ += bytes;
  deliver();
}

void ScriptedClient::deliver() {
  if (!sent_.empty() && reader_ != nullptr) {
    const std::string bytes = std::exchange(sent_, {});
    arrived_ += bytes.size();
    reader_->received(bytes);
  }
  if (hasEnded_ && sent_.empty() && reader_ != nullptr) {
    std::exchange(reader_, nullptr)->receivedEnd();
  }
}

void ScriptedClient::endSending() {
  hasEnded_ = true;
  deliver();
}

void ScriptedClient::fail() {
  StreamUser* const user = writer_ != nullptr ? writer_ : reader_;
  ASSERT_NE(user, nullptr) << "the daemon neither reads nor writes";
  writer_ = nullptr;
  user->failed();
}

void ScriptedClient::roomIs(std::size_t bytes) {
  room_ = bytes;
}

void ScriptedClient::take(std::size_t bytes) {
  ASSERT_NE(writer_, nullptr) << "no answer waits";
  room_ = bytes;
  waiting_.erase(0, accept(waiting_));
  if (waiting_.empty()) std::exchange(writer_, nullptr)->wrote();
}

std::string ScriptedClient::received() {
  return std::exchange(received_, {});
}

std::size_t ScriptedClient::accept(std::string_view bytes) {
  const std::size_t size = std::min(room_, bytes.size());
  if (room_ != unlimited) room_ -= size;
  received_ += bytes.substr(0, size);
  if (journal_ != nullptr) *journal_ += bytes.substr(0, size);
  return size;
}

}  // namespace ZelAgent
