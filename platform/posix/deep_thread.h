// DeepThread: the interpreter's thread, with a stack that holds the deepest script recursion.
#pragma once

#include <functional>
#include <memory>

namespace vl {

class DeepThread {
 public:
  DeepThread();
  ~DeepThread();  // joins
  // False when the system gives no thread.
  bool Start(std::function<void()> body);
  void Join();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace vl
