// Finds the functions that the recorder takes the place of.
#pragma once

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

namespace sensorvela::recorder {

/// The library, if the process has loaded it.
inline void* FindLibrary() {
  for (const char* const name : {"libsensorvela.so.1", "libsensorvela.so"}) {
    if (void* const library = dlopen(name, RTLD_LAZY | RTLD_NOLOAD)) return library;
  }
  return nullptr;
}

/// The definition that the process would use in the place of the recorder's own `function`, which
/// is a function, or a member function that is not virtual. The process ends if there is none:
/// whoever called the recorder's needs one.
template <typename Function>
Function NextDefinition(Function function) {
  // On every platform of the library, a pointer to a member function begins with its address.
  void* address = nullptr;
  static_assert(sizeof(function) >= sizeof(address));
  std::memcpy(static_cast<void*>(&address), static_cast<const void*>(&function), sizeof(address));
  Dl_info own = {};
  if (dladdr(address, &own) == 0 || own.dli_sname == nullptr) std::abort();
  void* next = dlsym(RTLD_NEXT, own.dli_sname);
  // The libraries of a host that is itself a plugin do not follow the recorder in the search order.
  if (void* const library = next == nullptr ? FindLibrary() : nullptr) {
    next = dlsym(library, own.dli_sname);
  }
  if (next == nullptr) std::abort();
  std::memcpy(static_cast<void*>(&function), static_cast<const void*>(&next), sizeof(next));
  return function;
}

}  // namespace sensorvela::recorder
