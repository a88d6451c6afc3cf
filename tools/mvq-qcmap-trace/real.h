/// Finds what the program would call if this library were not preloaded.
#pragma once

#include <cstring>

namespace trace {

/// Looks behind this library first, then in whatever else is loaded, since a plug-in sees libraries
/// that the program does not. Null if there is none.
void* FindReal(const char* symbol);

/// The address of a method that is not virtual. A pointer to such a method begins with it.
template <typename Method>
void* AddressOf(Method method) {
  void* address;
  std::memcpy(&address, &method, sizeof address);
  return address;
}
/// The method at this address, of the same type as a given one.
template <typename Method>
Method MethodAt(void* address, Method method) {
  std::memcpy(&method, &address, sizeof address);
  return method;
}

/// The same as FindReal for a method of this library, whose symbol the loader knows.
void* FindRealMethod(void* own);

}  // namespace trace
