// The simulated platform's stand-in for the device's header of interface objects.
#pragma once

#include <android/binder_auto_utils.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ndk {

/// An object that can make a shared reference to itself. It is made by `make` and in no other way.
class SharedRefBase {
 public:
  SharedRefBase() = default;
  SharedRefBase(const SharedRefBase&) = delete;
  SharedRefBase& operator=(const SharedRefBase&) = delete;
  virtual ~SharedRefBase() = default;

  template <typename T, typename... Args>
  static std::shared_ptr<T> make(Args&&... args) {
    T* const object = new T(std::forward<Args>(args)...);
    std::shared_ptr<T> shared(object);
    static_cast<SharedRefBase*>(object)->this_ = shared;
    return shared;
  }

  /// Null for an object that `make` has not made, and in its constructor.
  std::shared_ptr<SharedRefBase> ref() { return this_.lock(); }
  template <typename Child>
  std::shared_ptr<Child> ref() {
    return std::static_pointer_cast<Child>(ref());
  }

  static void operator delete(void* object) { ::operator delete(object); }

 private:
  static void* operator new(std::size_t size) { return ::operator new(size); }

  std::weak_ptr<SharedRefBase> this_;
};

/// An interface: the service itself, or on a device a proxy of it.
class ICInterface : public SharedRefBase {
 public:
  /// The binder of this object, with a reference for the caller.
  virtual SpAIBinder asBinder() = 0;

  /// Whether this is a proxy of a service in another process.
  virtual bool isRemote() = 0;

  /// Called to write the service's state onto `fd`.
  virtual binder_status_t dump(int fd, const char** args, std::uint32_t count);
};

/// The side of an interface that a service derives from.
template <typename Interface>
class BnCInterface : public Interface {
 public:
  SpAIBinder asBinder() override { return createBinder(); }
  bool isRemote() override { return false; }

 protected:
  virtual SpAIBinder createBinder() = 0;
};

}  // namespace ndk

// As on the device, a call of `std::make_shared` or `std::make_unique` for a service is ambiguous.
namespace std {

template <typename T, typename... Args,
          std::enable_if_t<std::is_base_of_v<ndk::SharedRefBase, T>, bool> = true>
shared_ptr<T> make_shared(Args...);

template <typename T, typename... Args,
          std::enable_if_t<std::is_base_of_v<ndk::SharedRefBase, T>, bool> = true>
unique_ptr<T> make_unique(Args...);

}  // namespace std
