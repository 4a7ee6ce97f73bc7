#include "platform/message_loop.h"

#include <atomic>

namespace platform {

namespace {
std::atomic<MessageLoop*> installedLoop{nullptr};
}  // namespace

void installMessageLoop(MessageLoop* loop) { installedLoop.store(loop, std::memory_order_release); }

MessageLoop* messageLoop() { return installedLoop.load(std::memory_order_acquire); }

bool post(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) {
  if (target == nullptr) return false;  // no window to tell: nothing to queue
  MessageLoop* loop = messageLoop();
  return loop != nullptr && loop->post(target, msg, param1, param2);
}

intptr_t send(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) {
  if (target == nullptr) return 0;
  MessageLoop* loop = messageLoop();
  return loop != nullptr ? loop->send(target, msg, param1, param2) : 0;
}

SendsRefused::SendsRefused() : loop_(messageLoop()) {
  if (loop_ != nullptr) loop_->refuseSends(true);
}

SendsRefused::~SendsRefused() {
  if (loop_ != nullptr) loop_->refuseSends(false);
}

struct Reply {
  intptr_t result = 0;
  bool done = false;
};

QueueLoop::QueueLoop(std::size_t capacity) : ring_(capacity > 0 ? capacity : 1), owner_(std::this_thread::get_id()) {}

bool QueueLoop::push(const Message& message) {
  if (closed_ || count_ == ring_.size()) return false;
  ring_[(head_ + count_) % ring_.size()] = message;
  ++count_;
  changed_.notify_all();
  return true;
}

void QueueLoop::releaseReplies() {
  for (std::size_t i = 0; i < count_; ++i) {
    Message& queued = ring_[(head_ + i) % ring_.size()];
    if (queued.reply == nullptr) continue;
    queued.reply->done = true;  // result stays 0
    queued.reply = nullptr;
    queued.target = nullptr;
  }
  changed_.notify_all();
}

bool QueueLoop::post(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) {
  {
    std::lock_guard lock(mutex_);
    if (!push({target, msg, param1, param2, nullptr})) return false;
  }
  queued();
  return true;
}

intptr_t QueueLoop::send(MessageTarget* target, uint32_t msg, uintptr_t param1, uintptr_t param2) {
  std::unique_lock lock(mutex_);
  if (std::this_thread::get_id() == owner_) {
    lock.unlock();
    return target != nullptr ? target->handleMessage(msg, param1, param2) : 0;
  }
  Reply reply;
  if (closed_ || refusals_ > 0 || !push({target, msg, param1, param2, &reply})) return 0;
  lock.unlock();
  queued();
  lock.lock();
  changed_.wait(lock, [&] { return reply.done; });
  return reply.result;
}

void QueueLoop::forget(MessageTarget* target) {
  std::unique_lock lock(mutex_);
  for (std::size_t i = 0; i < count_; ++i) {
    Message& queued = ring_[(head_ + i) % ring_.size()];
    if (queued.target != target) continue;
    queued.target = nullptr;
    if (queued.reply != nullptr) {
      queued.reply->done = true;
      queued.reply = nullptr;
    }
  }
  changed_.notify_all();
  // A message taken off the queue just before may still be in the target's
  // hands on the loop's thread: the target must outlive that call. On the
  // loop's own thread the target forgets itself from inside its handler.
  if (std::this_thread::get_id() != owner_) {
    changed_.wait(lock, [&] { return delivering_ != target; });
  }
}

void QueueLoop::refuseSends(bool refuse) {
  std::lock_guard lock(mutex_);
  if (refuse) {
    ++refusals_;
    releaseReplies();
  } else if (refusals_ > 0) {
    --refusals_;
  }
}

bool QueueLoop::deliverOne() {
  std::unique_lock lock(mutex_);
  if (count_ == 0) return false;
  const Message message = ring_[head_];
  head_ = (head_ + 1) % ring_.size();
  --count_;
  busy_ = true;
  delivering_ = message.target;
  lock.unlock();

  const intptr_t result =
      message.target != nullptr ? message.target->handleMessage(message.msg, message.param1, message.param2) : 0;
  lock.lock();
  busy_ = false;
  delivering_ = nullptr;
  if (message.reply != nullptr) {
    message.reply->result = result;
    message.reply->done = true;
  }
  changed_.notify_all();
  return true;
}

void QueueLoop::setOwner(std::thread::id owner) {
  std::lock_guard lock(mutex_);
  owner_ = owner;
}

void QueueLoop::shutDown() {
  std::lock_guard lock(mutex_);
  closed_ = true;
  releaseReplies();
  count_ = 0;
}

bool QueueLoop::waitForMessage(const bool& stopping) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return count_ > 0 || stopping; });
  return !stopping;
}

void QueueLoop::waitUntilIdle() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return (count_ == 0 && !busy_) || closed_; });
}

std::vector<Message> QueueLoop::snapshot() const {
  std::lock_guard lock(mutex_);
  std::vector<Message> messages;
  for (std::size_t i = 0; i < count_; ++i) {
    const Message& queued = ring_[(head_ + i) % ring_.size()];
    if (queued.target != nullptr) messages.push_back(queued);
  }
  return messages;
}

std::size_t QueueLoop::queuedCount() const {
  std::lock_guard lock(mutex_);
  return count_;
}

ManualLoop::ManualLoop(std::size_t capacity) : QueueLoop(capacity) {}

std::size_t ManualLoop::pump(std::size_t max) {
  std::size_t delivered = 0;
  while (delivered < max && deliverOne()) ++delivered;
  return delivered;
}

ThreadedLoop::ThreadedLoop(std::size_t capacity) : QueueLoop(capacity) {
  thread_ = std::thread([this] { run(); });
  setOwner(thread_.get_id());
}

ThreadedLoop::~ThreadedLoop() { stop(); }

void ThreadedLoop::run() {
  while (waitForMessage(stopping_)) {
    while (deliverOne()) {
    }
  }
}

void ThreadedLoop::waitIdle() { waitUntilIdle(); }

void ThreadedLoop::stop() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  shutDown();
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

}  // namespace platform
