/// Finds what the program would call if this library were not preloaded.
#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cstring>

namespace trace {

/// An address that was found. Once any library has been unloaded, it must be looked for again.
class Found {
 public:
  /// Null if it is not known.
  void* Get() const;
  void Set(void* address);

 private:
  std::atomic<void*> address_{nullptr};
  std::atomic<unsigned long long> unloads_{0};
};

/// Looks behind this library first, then in whatever else is loaded, since a plug-in sees libraries
/// that the program does not. Null if there is none.
void* FindReal(const char* symbol, Found& found);

template <typename Function>
Function* FindRealFunction(const char* symbol, Found& found) {
  return reinterpret_cast<Function*>(FindReal(symbol, found));
}

/// The same for a method of this library, whose symbol the loader knows. A pointer to a method that
/// is not virtual begins with its address.
template <auto kMethod>
decltype(kMethod) FindRealMethod() {
  static Found found;
  auto method = kMethod;
  void* address = found.Get();
  if (address == nullptr) {
    Dl_info own{};
    std::memcpy(&address, &method, sizeof address);
    ::dladdr(address, &own);
    address = FindReal(own.dli_sname, found);
  }
  if (address == nullptr) return nullptr;
  std::memcpy(&method, &address, sizeof address);
  return method;
}

}  // namespace trace
