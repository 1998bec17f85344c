// The baseline for queueing an atom: the minimum that an enqueue must do.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <semaphore>
#include <thread>
#include <utility>
#include <variant>

namespace sensorvela::benchmarks {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

class BaselineQueue {
 public:
  BaselineQueue() : emptier_([this] { Run(); }) {}
  ~BaselineQueue() {
    stopped_ = true;
    full_.release();
    emptier_.join();
  }

  void Enqueue(VendorAtom&& atom) {
    const std::lock_guard lock(mutex_);
    atoms_.push_back(std::move(atom));
    not_empty_.notify_all();
  }

  /// Frees all atoms on the queue's own thread, as the engine does.
  void Empty() {
    full_.release();
    empty_.acquire();
  }

 private:
  void Run() {
    while (true) {
      full_.acquire();
      if (stopped_) return;
      std::deque<VendorAtom>().swap(atoms_);
      empty_.release();
    }
  }

  std::mutex mutex_;
  std::condition_variable not_empty_;
  std::deque<VendorAtom> atoms_;
  std::binary_semaphore full_{0};
  std::binary_semaphore empty_{0};
  bool stopped_ = false;
  std::thread emptier_;
};

/// An atom of `ints` ints and, on request, a list of five ints. The values take one exact
/// allocation, the list another.
inline VendorAtom BaselineAtom(int ints, bool with_list = false) {
  VendorAtom atom;
  atom.atomId = 1;
  atom.values.reserve(static_cast<std::size_t>(ints) + (with_list ? 1 : 0));
  for (std::int32_t i = 0; i < ints; ++i) atom.values.emplace_back(std::in_place_index<0>, i);
  if (with_list) atom.values.emplace_back(std::in_place_index<5>, std::in_place, 5U);
  return atom;
}

}  // namespace sensorvela::benchmarks
