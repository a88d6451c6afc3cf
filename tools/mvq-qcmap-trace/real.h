/// Finds what the program would call if this library were not preloaded.
#pragma once

#include <dlfcn.h>

#include <cstring>

namespace trace {

/// Looks behind this library first, then in whatever else is loaded, since a plug-in sees libraries
/// that the program does not. Null if there is none, which is reported once.
void* FindReal(const char* symbol);

template <typename Function>
Function* FindRealFunction(const char* symbol) {
  return reinterpret_cast<Function*>(FindReal(symbol));
}

/// The same for a method of this library, whose symbol the loader knows. A pointer to a method that
/// is not virtual begins with its address.
template <auto kMethod>
decltype(kMethod) FindRealMethod() {
  auto method = kMethod;
  void* address;
  std::memcpy(&address, &method, sizeof address);
  Dl_info own{};
  ::dladdr(address, &own);
  address = FindReal(own.dli_sname);
  if (address == nullptr) return nullptr;
  std::memcpy(&method, &address, sizeof address);
  return method;
}

}  // namespace trace
