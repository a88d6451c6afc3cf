/// Counts what a thread allocates with operator new, and lets allocations fail.
#include "allocation.h"

#include <cstdlib>
#include <new>

thread_local bool fail_calloc = false;

namespace {

thread_local bool watching = false;
thread_local int untracked = 0;
thread_local int failing_at = 0;
thread_local int counted = 0;

bool Fails() {
  if (!watching || untracked > 0) return false;
  ++counted;
  return counted == failing_at;
}

}  // namespace

Allocations::Allocations(int fail_at) {
  failing_at = fail_at;
  counted = 0;
  watching = true;
}

Allocations::~Allocations() {
  watching = false;
}

int Allocations::count() const {
  return counted;
}

Untracked::Untracked() {
  ++untracked;
}

Untracked::~Untracked() {
  --untracked;
}

void* operator new(std::size_t size) {
  void* const block = Fails() ? nullptr : std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

// The linker sends the library's calls of calloc here.
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size) {
  return fail_calloc ? nullptr : __real_calloc(count, size);
}
