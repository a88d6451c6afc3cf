/// Finds symbols in the libraries of the traced program.
#include "real.h"

#include <link.h>

#include <string>
#include <vector>

#include "line_file.h"

namespace trace {
namespace {

void* FindInLoaded(const char* symbol) {
  std::vector<std::string> names;
  const auto add = [](dl_phdr_info* library, size_t, void* to) {
    static_cast<std::vector<std::string>*>(to)->emplace_back(library->dlpi_name);
    return 0;
  };
  ::dl_iterate_phdr(add, &names);
  Dl_info self{};
  ::dladdr(reinterpret_cast<void*>(&FindInLoaded), &self);
  for (const std::string& name : names) {
    if (name.empty() || name == self.dli_fname) continue;
    void* const library = ::dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) continue;
    void* const found = ::dlsym(library, symbol);
    ::dlclose(library);
    if (found != nullptr) return found;
  }
  return nullptr;
}

/// How many libraries have been unloaded.
unsigned long long CountUnloads() {
  unsigned long long unloads = 0;
  const auto read = [](dl_phdr_info* library, size_t, void* to) {
    *static_cast<unsigned long long*>(to) = library->dlpi_subs;
    return 1;
  };
  ::dl_iterate_phdr(read, &unloads);
  return unloads;
}

}  // namespace

void* Found::Get() const {
  return unloads_ == CountUnloads() ? address_.load() : nullptr;
}

void Found::Set(void* address) {
  address_ = nullptr;  // another thread must not take the old address for a new one
  unloads_ = CountUnloads();
  address_ = address;
}

void* FindReal(const char* symbol, Found& found) {
  if (void* const known = found.Get()) return known;
  const Unnoticed unnoticed;
  void* address = ::dlsym(RTLD_NEXT, symbol);
  if (address == nullptr) address = FindInLoaded(symbol);
  found.Set(address);
  return address;
}

}  // namespace trace
