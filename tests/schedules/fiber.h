// A thread of a run: a stack of its own, switched to by hand.
#pragma once

#include <ucontext.h>

#include <array>
#include <cstddef>

namespace sensorvela::schedules {

class Fiber {
 public:
  /// The next switch to this fiber calls `entry` on the fiber's stack. `entry` must not return.
  void Prepare(void (*entry)()) {
    getcontext(&context_);
    context_.uc_stack.ss_sp = stack_.data();
    context_.uc_stack.ss_size = stack_.size();
    makecontext(&context_, entry, 0);
  }

  /// Stops here, on `this`, and goes on with `other`. Returns at the next switch to `this`.
  void SwitchTo(const Fiber& other) { swapcontext(&context_, &other.context_); }

 private:
  ucontext_t context_ = {};
  alignas(16) std::array<std::byte, 1 << 16> stack_;
};

}  // namespace sensorvela::schedules
