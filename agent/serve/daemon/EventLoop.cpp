#include "agent/serve/daemon/EventLoop.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "Duolog/OutOfMemory.h"

namespace ZelAgent {
namespace {

using std::chrono::milliseconds;

class CallEveryPeriod final : public RepeatedCall {
 public:
  CallEveryPeriod(EventLoop& loop, milliseconds period, Scheduler::Call call)
      : period_(static_cast<std::uint64_t>(period.count())),
        call_(std::move(call)),
        timer_(makeHandle<uv_timer_t>(loop, this, uv_timer_init)) {}

  void start() override {
    const auto onTimer = [](uv_timer_t* timer) {
      if (auto* const self = static_cast<CallEveryPeriod*>(timer->data)) self->call_();
    };
    uv_update_time(timer_->loop);  // the current callback may have taken long
    uv_timer_start(timer_.get(), onTimer, period_, period_);
  }
  void stop() noexcept override { uv_timer_stop(timer_.get()); }

 private:
  std::uint64_t period_;
  Scheduler::Call call_;
  LoopHandle<uv_timer_t> timer_;
};

class CallEveryRound final : public RepeatedCall {
 public:
  CallEveryRound(EventLoop& loop, Scheduler::Call call)
      : call_(std::move(call)), idle_(makeHandle<uv_idle_t>(loop, this, uv_idle_init)) {}

  void start() override {
    const auto onIdle = [](uv_idle_t* idle) {
      if (auto* const self = static_cast<CallEveryRound*>(idle->data)) self->call_();
    };
    uv_idle_start(idle_.get(), onIdle);
  }
  void stop() noexcept override { uv_idle_stop(idle_.get()); }

 private:
  Scheduler::Call call_;
  LoopHandle<uv_idle_t> idle_;
};

// libuv itself handles some failed allocations by an abort without a message.
void* needMemory(void* memory, std::size_t size) {
  if (memory == nullptr) Duolog::outOfMemory(size);
  return memory;
}

void endProcessWithoutMemory() {
  const int result = uv_replace_allocator(
      [](std::size_t size) { return needMemory(std::malloc(size), size); },
      [](void* block, std::size_t size) { return needMemory(std::realloc(block, size), size); },
      [](std::size_t count, std::size_t size) {
        return needMemory(std::calloc(count, size), count * size);
      },
      std::free);
  needSuccess(result, "the event loop");
}

}  // namespace

EventLoop::EventLoop() {
  endProcessWithoutMemory();
  needSuccess(uv_loop_init(&loop_), "the event loop");
}

EventLoop::~EventLoop() {
  uv_run(&loop_, UV_RUN_DEFAULT);
  uv_loop_close(&loop_);
}

std::unique_ptr<RepeatedCall> EventLoop::every(milliseconds period, Call call) {
  return std::make_unique<CallEveryPeriod>(*this, period, std::move(call));
}

std::unique_ptr<RepeatedCall> EventLoop::everyRound(Call call) {
  return std::make_unique<CallEveryRound>(*this, std::move(call));
}

}  // namespace ZelAgent
