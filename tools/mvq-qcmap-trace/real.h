/// Finds what the program would call if this library were not preloaded.
#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cstring>

namespace trace {

/// Looks behind this library first, then in whatever else is loaded, since a plug-in sees libraries
/// that the program does not. Null if there is none, which is reported once. `cache` keeps what
/// stays where it is: a plug-in's libraries may be unloaded and loaded again elsewhere.
void* FindReal(const char* symbol, std::atomic<void*>& cache);

template <typename Function>
Function* FindRealFunction(const char* symbol) {
  std::atomic<void*> cache{nullptr};
  return reinterpret_cast<Function*>(FindReal(symbol, cache));
}

/// The same for a method of this library, whose symbol the loader knows. A pointer to a method that
/// is not virtual begins with its address.
template <auto kMethod>
decltype(kMethod) FindRealMethod() {
  static std::atomic<void*> cache{nullptr};
  auto method = kMethod;
  void* address = cache;
  if (address == nullptr) {
    Dl_info own{};
    std::memcpy(&address, &method, sizeof address);
    ::dladdr(address, &own);
    address = FindReal(own.dli_sname, cache);
  }
  if (address == nullptr) return nullptr;
  std::memcpy(&method, &address, sizeof address);
  return method;
}

}  // namespace trace
