#pragma once
// The message loop seam: posted and sent notifications, carrying the system's
// own message numbers, delivered in order on the loop's thread.
//
// post() may be called from any thread, including the timer thread and device
// callbacks: it takes only the loop's short critical section and never
// allocates. send() from the loop's own thread calls the target directly; from
// another thread it blocks until the loop has handled the message, or until
// sends are refused (clock close, shut-down), which releases it with result 0.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

// A receiver of notifications: a window, a control, or the hidden window of a port.
class MessageTarget {
 public:
  virtual intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) = 0;

 protected:
  ~MessageTarget() = default;
};

class MessageLoop {
 public:
  virtual ~MessageLoop() = default;
  // Queues a message; false if the queue is full or the loop has shut down.
  virtual bool post(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) = 0;
  // Delivers a message on the loop's thread and returns the target's answer.
  virtual intptr_t send(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) = 0;
  // Drops the queued messages of a target that goes away, as a destroyed
  // window's messages are lost. From another thread than the loop's, also
  // waits until a message already being handled by the target has returned.
  virtual void forget(MessageTarget* target) = 0;
  // While refused, every waiting send is released with 0 and a new send from
  // another thread returns 0 at once. A clock that closes refuses sends so that
  // a timer blocked in a send can never hold up its own shut-down. Refusals
  // nest: sends are taken again once every refusal has been withdrawn.
  virtual void refuseSends(bool refuse) = 0;
};

// Refuses the installed loop's sends for the life of the object: what the UI
// thread does while a timer or device thread may be waiting in a send to it.
class SendsRefused {
 public:
  SendsRefused();
  ~SendsRefused();
  SendsRefused(const SendsRefused&) = delete;
  SendsRefused& operator=(const SendsRefused&) = delete;

 private:
  MessageLoop* loop_;
};

// The loop that the engine talks to, chosen once in main() or a test's set-up.
void installMessageLoop(MessageLoop* loop);
MessageLoop* messageLoop();

// Forward to the installed loop; with none installed, post fails and send gives 0.
bool post(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2);
intptr_t send(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2);

struct Message {
  MessageTarget* target;  // null once forgotten or released
  uint32_t msg;
  uintptr_t param1;
  uintptr_t param2;
  struct Reply* reply;  // set for a send waiting on another thread
};

// A loop over a fixed-size queue. Its owner thread is the one that delivers.
class QueueLoop : public MessageLoop {
 public:
  explicit QueueLoop(std::size_t capacity);
  bool post(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  intptr_t send(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  void forget(MessageTarget* target) override;
  void refuseSends(bool refuse) override;

 protected:
  // Takes the oldest message and delivers it; false when the queue is empty.
  bool deliverOne();
  // Called after a message was queued, outside the critical section, on the
  // posting thread: a loop that sleeps elsewhere than in waitForMessage wakes here.
  virtual void queued() {}
  void setOwner(std::thread::id owner);
  // Refuses sends and posts for good, dropping whatever is queued.
  void shutDown();
  // Blocks until a message waits (true) or stopping is set (false).
  bool waitForMessage(const bool& stopping);
  // Blocks until the queue is empty and nothing is being delivered.
  void waitUntilIdle();
  std::vector<Message> snapshot() const;
  // How many messages wait now.
  std::size_t queuedCount() const;

  mutable std::mutex mutex_;

 private:
  bool push(const Message& message);  // call with mutex_ held
  void releaseReplies();              // call with mutex_ held

  std::vector<Message> ring_;
  std::size_t head_ = 0, count_ = 0;
  bool busy_ = false;  // a message is being delivered
  MessageTarget* delivering_ = nullptr;  // the target of that message
  int refusals_ = 0;  // refusals not yet withdrawn
  bool closed_ = false;
  std::thread::id owner_;
  std::condition_variable changed_;
};

// The test's loop: nothing is delivered until the test pumps.
class ManualLoop final : public QueueLoop {
 public:
  explicit ManualLoop(std::size_t capacity = 8192);
  // Delivers up to max messages, including those posted meanwhile; returns how many.
  std::size_t pump(std::size_t max = SIZE_MAX);
  // The queued messages, oldest first, without delivering them.
  std::vector<Message> pending() const { return snapshot(); }
};

// The headless programs' loop: a thread of its own delivers in order.
class ThreadedLoop final : public QueueLoop {
 public:
  explicit ThreadedLoop(std::size_t capacity = 8192);
  ~ThreadedLoop() override;
  // Waits until everything queued so far has been delivered.
  void waitIdle();
  // Releases waiting sends, drops the queue and joins the thread.
  void stop();

 private:
  void run();
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace platform
