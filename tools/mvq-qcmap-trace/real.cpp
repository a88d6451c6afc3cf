/// Finds symbols in the libraries of the traced program.
#include "real.h"

#include <link.h>

#include <atomic>
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

}  // namespace

void* FindReal(const char* symbol, std::atomic<void*>& cache) {
  const Unnoticed unnoticed;
  void* found = cache = ::dlsym(RTLD_NEXT, symbol);
  if (found == nullptr) found = FindInLoaded(symbol);
  static std::atomic<bool> reported{false};
  if (found == nullptr && !reported.exchange(true))
    Complain(std::string("no library of this program has ") + symbol + "; its calls fail");
  return found;
}

}  // namespace trace
