#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

EventLoop::EventLoop() {
  needSuccess(uv_loop_init(&loop_), "the event loop");
}

EventLoop::~EventLoop() {
  uv_run(&loop_, UV_RUN_DEFAULT);
  uv_loop_close(&loop_);
}

}  // namespace ZelAgent
