#include "platform/message_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <vector>

using namespace platform;

namespace {

struct Received {
  uint32_t msg;
  uintptr_t param1;
  uintptr_t param2;
  std::thread::id thread;
};

class Target final : public MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override {
    received.push_back({msg, param1, param2, std::this_thread::get_id()});
    if (block) {
      entered = true;
      while (block) std::this_thread::yield();
    }
    return static_cast<intptr_t>(msg) + 1000;
  }
  std::vector<Received> received;  // written on the loop's thread only
  std::atomic<bool> block{false};
  std::atomic<bool> entered{false};
};

void waitUntil(const std::function<bool()>& condition) {
  while (!condition()) std::this_thread::yield();
}

TEST(ManualLoop, PostedMessagesArriveInOrderWhenPumped) {
  ManualLoop loop;
  Target target;
  EXPECT_TRUE(loop.post(&target, 20822, 0, 7));
  EXPECT_TRUE(loop.post(&target, 20823, 81, 0));
  EXPECT_TRUE(target.received.empty());
  EXPECT_EQ(loop.pump(), 2u);
  ASSERT_EQ(target.received.size(), 2u);
  EXPECT_EQ(target.received[0].msg, 20822u);
  EXPECT_EQ(target.received[0].param2, 7u);
  EXPECT_EQ(target.received[1].msg, 20823u);
  EXPECT_EQ(target.received[1].param1, 81u);
}

TEST(ManualLoop, PendingShowsTheQueueWithoutDelivering) {
  ManualLoop loop;
  Target target;
  loop.post(&target, 963, 0, 1);
  const auto pending = loop.pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_EQ(pending[0].msg, 963u);
  EXPECT_EQ(pending[0].target, &target);
  EXPECT_TRUE(target.received.empty());
}

TEST(ManualLoop, PumpDeliversWhatHandlersPostMeanwhileUpToItsLimit) {
  ManualLoop loop;
  struct Reposter final : MessageTarget {
    ManualLoop* loop = nullptr;
    int count = 0;
    intptr_t handleMessage(uint32_t msg, uintptr_t, uintptr_t) override {
      ++count;
      loop->post(this, msg, 0, 0);  // a retry that never ends
      return 0;
    }
  } reposter;
  reposter.loop = &loop;
  loop.post(&reposter, 20821, 0, 0);
  EXPECT_EQ(loop.pump(5), 5u);
  EXPECT_EQ(reposter.count, 5);
}

TEST(ManualLoop, ASendFromTheLoopsOwnThreadIsHandledAtOnce) {
  ManualLoop loop;
  Target target;
  EXPECT_EQ(loop.send(&target, 963, 1, 2), 1963);
  EXPECT_EQ(target.received.size(), 1u);
  EXPECT_TRUE(loop.pending().empty());
}

TEST(ManualLoop, ASendFromAnotherThreadWaitsUntilItIsHandled) {
  ManualLoop loop;
  Target target;
  auto reply = std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 5); });
  waitUntil([&] { return loop.pending().size() == 1; });
  EXPECT_EQ(reply.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
  loop.pump();
  EXPECT_EQ(reply.get(), 1963);
  ASSERT_EQ(target.received.size(), 1u);
  EXPECT_EQ(target.received[0].thread, std::this_thread::get_id());
}

TEST(ManualLoop, RefusingSendsReleasesAWaitingSendWithZero) {
  ManualLoop loop;
  Target target;
  auto reply = std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 0); });
  waitUntil([&] { return loop.pending().size() == 1; });
  loop.refuseSends(true);
  EXPECT_EQ(reply.get(), 0);
  EXPECT_TRUE(loop.pending().empty());
  loop.pump();
  EXPECT_TRUE(target.received.empty()) << "a released send is not delivered later";
}

TEST(ManualLoop, WhileRefusedASendFromAnotherThreadReturnsAtOnceButPostsGoOn) {
  ManualLoop loop;
  Target target;
  loop.refuseSends(true);
  EXPECT_EQ(std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 0); }).get(), 0);
  EXPECT_TRUE(loop.post(&target, 20822, 0, 0));
  loop.refuseSends(false);
  auto reply = std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 0); });
  waitUntil([&] { return loop.pending().size() == 2; });
  loop.pump();
  EXPECT_EQ(reply.get(), 1963);
}

TEST(ManualLoop, RefusalsNestAndSendsComeBackOnlyWhenEveryOneIsWithdrawn) {
  ManualLoop loop;
  installMessageLoop(&loop);
  Target target;
  {
    const SendsRefused outer;
    {
      const SendsRefused inner;
    }
    EXPECT_EQ(std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 0); }).get(), 0)
        << "the outer refusal still stands";
  }
  installMessageLoop(nullptr);
  auto reply = std::async(std::launch::async, [&] { return loop.send(&target, 963, 0, 0); });
  waitUntil([&] { return loop.pending().size() == 1; });
  loop.pump();
  EXPECT_EQ(reply.get(), 1963);
}

TEST(ManualLoop, AForgottenTargetGetsNothingMoreAndItsSendIsReleased) {
  ManualLoop loop;
  Target gone, staying;
  loop.post(&gone, 20818, 0, 0);
  loop.post(&staying, 20819, 0, 0);
  auto reply = std::async(std::launch::async, [&] { return loop.send(&gone, 963, 0, 0); });
  waitUntil([&] { return loop.pending().size() == 3; });
  loop.forget(&gone);
  EXPECT_EQ(reply.get(), 0);
  loop.pump();
  EXPECT_TRUE(gone.received.empty());
  EXPECT_EQ(staying.received.size(), 1u);
}

TEST(ManualLoop, AFullQueueRefusesPosts) {
  ManualLoop loop(3);
  Target target;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(loop.post(&target, 1, 0, 0));
  EXPECT_FALSE(loop.post(&target, 1, 0, 0));
  loop.pump(1);
  EXPECT_TRUE(loop.post(&target, 1, 0, 0));
}

TEST(InstalledLoop, WithoutALoopPostFailsAndSendGivesZero) {
  installMessageLoop(nullptr);
  Target target;
  EXPECT_FALSE(post(&target, 1, 0, 0));
  EXPECT_EQ(send(&target, 1, 0, 0), 0);
}

TEST(InstalledLoop, TheFreeFunctionsGoToTheInstalledLoop) {
  ManualLoop loop;
  installMessageLoop(&loop);
  Target target;
  EXPECT_TRUE(post(&target, 20822, 0, 0));
  EXPECT_EQ(send(&target, 963, 0, 0), 1963);
  loop.pump();
  EXPECT_EQ(target.received.size(), 2u);
  installMessageLoop(nullptr);
}

TEST(ThreadedLoop, PostsFromAnyThreadAreHandledInOrderOnTheLoopsThread) {
  ThreadedLoop loop;
  Target target;
  std::thread a([&] {
    for (uintptr_t i = 0; i < 500; ++i) loop.post(&target, 1, i, 0);
  });
  std::thread b([&] {
    for (uintptr_t i = 0; i < 500; ++i) loop.post(&target, 2, i, 0);
  });
  a.join();
  b.join();
  loop.waitIdle();
  ASSERT_EQ(target.received.size(), 1000u);
  uintptr_t next[3] = {0, 0, 0};
  for (const Received& r : target.received) {
    EXPECT_EQ(r.param1, next[r.msg]++) << "each thread's posts keep their order";
    EXPECT_NE(r.thread, std::this_thread::get_id());
  }
}

TEST(ThreadedLoop, ASendFromAnotherThreadReturnsTheAnswer) {
  ThreadedLoop loop;
  Target target;
  EXPECT_EQ(loop.send(&target, 963, 0, 0), 1963);
}

TEST(ThreadedLoop, ForgettingATargetFromAnotherThreadWaitsForTheMessageItIsHandling) {
  ThreadedLoop loop;
  Target busy;
  busy.block = true;
  loop.post(&busy, 1, 0, 0);
  waitUntil([&] { return busy.entered.load(); });
  std::atomic<bool> forgotten{false};
  auto forgetting = std::async(std::launch::async, [&] {
    loop.forget(&busy);
    forgotten = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(forgotten) << "the target is still in its handler: it may not go yet";
  busy.block = false;
  forgetting.get();
  EXPECT_TRUE(forgotten);
}

TEST(ThreadedLoop, ATargetForgettingItselfInItsHandlerGoesOn) {
  struct SelfForgetting final : MessageTarget {
    ThreadedLoop* loop = nullptr;
    std::atomic<bool> done{false};
    intptr_t handleMessage(uint32_t, uintptr_t, uintptr_t) override {
      loop->forget(this);
      done = true;
      return 0;
    }
  } target;
  ThreadedLoop loop;
  target.loop = &loop;
  loop.post(&target, 1, 0, 0);
  loop.waitIdle();
  EXPECT_TRUE(target.done);
}

TEST(ThreadedLoop, ShuttingDownReleasesASendThatWaits) {
  ThreadedLoop loop;
  Target busy, waited;
  busy.block = true;
  loop.post(&busy, 1, 0, 0);  // the loop is held up in this handler
  waitUntil([&] { return busy.entered.load(); });
  auto reply = std::async(std::launch::async, [&] { return loop.send(&waited, 963, 0, 0); });
  auto stopping = std::async(std::launch::async, [&] { loop.stop(); });
  EXPECT_EQ(reply.get(), 0) << "released, not left hanging";
  busy.block = false;
  stopping.get();
  EXPECT_TRUE(waited.received.empty());
  EXPECT_FALSE(loop.post(&waited, 1, 0, 0)) << "a stopped loop takes no more posts";
}

}  // namespace
