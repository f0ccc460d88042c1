// Repeated calls on the event loop.
#include "agent/serve/daemon/EventLoop.h"

#include <gmock/gmock.h>

namespace ZelAgent {
namespace {

using std::chrono::milliseconds;

TEST(EventLoop, RepeatsACallInEachPeriodUntilItIsStopped) {
  EventLoop loop;
  int calls = 0;
  std::unique_ptr<RepeatedCall> call;
  call = loop.every(milliseconds(1), [&] {
    if (++calls == 3) call->stop();
    if (calls > 3) loop.stop();
  });
  call->start();
  loop.run();  // ends when nothing is left to wait for
  EXPECT_EQ(calls, 3);
}

TEST(EventLoop, MakesNoCallBeforeThePeriodIsOver) {
  EventLoop loop;
  std::string calls;
  std::unique_ptr<RepeatedCall> late = loop.every(milliseconds(20), [&] {
    calls += "late";
    loop.stop();
  });
  std::unique_ptr<RepeatedCall> soon = loop.every(milliseconds(5), [&] {
    calls += "soon ";
    soon->stop();
  });
  late->start();
  soon->start();
  loop.run();
  EXPECT_EQ(calls, "soon late");
}

TEST(EventLoop, BeginsThePeriodAgainAtStart) {
  EventLoop loop;
  std::string calls;
  std::unique_ptr<RepeatedCall> second = loop.every(milliseconds(8), [&] {
    calls += "second";
    loop.stop();
  });
  std::unique_ptr<RepeatedCall> first = loop.every(milliseconds(6), [&] {
    calls += "first ";
    second->start();
    first->stop();
  });
  second->start();
  first->start();
  loop.run();
  EXPECT_EQ(calls, "first second");
}

TEST(EventLoop, RepeatsACallInEachRoundUntilItIsStopped) {
  EventLoop loop;
  int calls = 0;
  std::unique_ptr<RepeatedCall> call;
  call = loop.everyRound([&] {
    if (++calls > 2) loop.stop();
  });
  uv_run(loop.get(), UV_RUN_NOWAIT);
  EXPECT_EQ(calls, 0);
  call->start();
  uv_run(loop.get(), UV_RUN_NOWAIT);
  EXPECT_EQ(calls, 1);
  uv_run(loop.get(), UV_RUN_NOWAIT);
  EXPECT_EQ(calls, 2);
  call->stop();
  loop.run();
  EXPECT_EQ(calls, 2);
}

TEST(EventLoop, AllowsACallToDestroyItself) {
  EventLoop loop;
  int calls = 0;
  std::unique_ptr<RepeatedCall> round = loop.everyRound([&] {
    ++calls;
    round.reset();
  });
  std::unique_ptr<RepeatedCall> period = loop.every(milliseconds(1), [&] {
    ++calls;
    period.reset();
  });
  round->start();
  period->start();
  loop.run();
  EXPECT_EQ(calls, 2);
}

TEST(EventLoop, StopsTheCallsThatAreDestroyed) {
  EventLoop loop;
  const auto fail = [] { ADD_FAILURE() << "it was destroyed"; };
  {
    const auto round = loop.everyRound(fail);
    const auto period = loop.every(milliseconds(1), fail);
    round->start();
    period->start();
  }
  loop.run();
  EXPECT_EQ(uv_loop_alive(loop.get()), 0);
}

TEST(EventLoop, ReportsWhatFailed) {
  try {
    needSuccess(UV_EACCES, "the handle");
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the handle: permission denied");
  }
}

}  // namespace
}  // namespace ZelAgent
