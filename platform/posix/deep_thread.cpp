#include "platform/posix/deep_thread.h"

#include <pthread.h>

#include "base/limits.h"

namespace vl {

struct DeepThread::State {
  std::function<void()> body;
  pthread_t thread{};
  bool started = false;
};

DeepThread::DeepThread() : state_(std::make_unique<State>()) {}

DeepThread::~DeepThread() { Join(); }

bool DeepThread::Start(std::function<void()> body) {
  Join();
  state_->body = std::move(body);
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setstacksize(&attributes, limits::kThreadStackBytes);
  const int failed = pthread_create(
      &state_->thread, &attributes,
      [](void* state) -> void* {
        static_cast<State*>(state)->body();
        return nullptr;
      },
      state_.get());
  pthread_attr_destroy(&attributes);
  state_->started = failed == 0;
  return state_->started;
}

void DeepThread::Join() {
  if (!state_->started) return;
  pthread_join(state_->thread, nullptr);
  state_->started = false;
}

}  // namespace vl
