/// Lets operator new fail in a program of its own process, when a test says so through a file.
#include "failing_new.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace {

AllocationFailure* Shared() {
  static AllocationFailure* const shared = []() -> AllocationFailure* {
    const char* const path = std::getenv(kAllocationFailureVariable);
    const int fd = path != nullptr ? ::open(path, O_RDWR | O_CLOEXEC) : -1;
    if (fd < 0) std::abort();
    void* const memory =
        ::mmap(nullptr, sizeof(AllocationFailure), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    if (memory == MAP_FAILED) std::abort();
    return static_cast<AllocationFailure*>(memory);
  }();
  return shared;
}

}  // namespace

void* operator new(std::size_t size) {
  AllocationFailure& failure = *Shared();
  bool fails = failure.lasts && failure.has_happened;
  if (failure.countdown > 0 && --failure.countdown == 0) fails = failure.has_happened = true;
  void* const block = fails ? nullptr : std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
