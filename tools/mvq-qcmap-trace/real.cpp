/// Finds symbols in the libraries of the traced program.
#include "real.h"

#include <dlfcn.h>
#include <link.h>

#include <string>
#include <vector>

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

}  // namespace

void* FindReal(const char* symbol) {
  void* const next = ::dlsym(RTLD_NEXT, symbol);
  return next != nullptr ? next : FindInLoaded(symbol);
}

void* FindRealMethod(void* own) {
  Dl_info info{};
  ::dladdr(own, &info);
  return FindReal(info.dli_sname);
}

}  // namespace trace
