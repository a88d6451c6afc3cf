/// Loads the library, with all it needs, as a plug-in: its symbols are for nobody else.
#include <dlfcn.h>

#include <cstdio>

int main(int, char* argv[]) {
  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return std::puts(dlerror());
  void* const get = dlsym(library, "_ZN3mox6vendor4qcom5qcmap12QcmapWrapper11GetInstanceEv");
  void* const activate = dlsym(library, "_ZN3mox6vendor4qcom5qcmap12QcmapWrapper11ActivateLanEv");
  if (get == nullptr || activate == nullptr) return 1;
  void* const wrapper = reinterpret_cast<void* (*)()>(get)();
  return reinterpret_cast<bool (*)(void*)>(activate)(wrapper) ? 0 : 1;
}
