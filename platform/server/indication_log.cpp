/// Stores indications one behind the other and starts over at the end of the ring.
#include "server/indication_log.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <type_traits>

namespace sim {
namespace {

/// What stands before the elements of an entry. An entry is never split at the end of the ring;
/// `is_gap` marks the bytes that are left there.
struct Head {
  bool is_gap;
  bool has_elements;
  uint32_t receiver;
  Indication indication;
  uint32_t elements_size;
};
static_assert(std::is_trivially_copyable_v<Head>);

}  // namespace

IndicationLog::IndicationLog()
    : bytes_(static_cast<char*>(
          ::mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
  if (bytes_ == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "indications");
}

IndicationLog::~IndicationLog() {
  ::munmap(bytes_, kBytes);
}

void IndicationLog::Add(const Entry& entry) noexcept {
  const size_t size = sizeof(Head) + entry.elements.size();
  const size_t left = kBytes - end_ % kBytes;
  if (left < size) {
    const Head gap{true, false, 0, {}, 0};
    if (left >= sizeof gap) std::memcpy(&bytes_[end_ % kBytes], &gap, sizeof gap);
    end_ += left;
  }
  const Head head{false, entry.has_elements, entry.receiver, entry.indication,
                  static_cast<uint32_t>(entry.elements.size())};
  char* const place = &bytes_[end_ % kBytes];
  std::memcpy(place, &head, sizeof head);
  if (!entry.elements.empty())
    std::memcpy(place + sizeof head, entry.elements.data(), entry.elements.size());
  end_ += size;
}

IndicationLog::Entry IndicationLog::Next(Position& position) const {
  Head head{true, false, 0, {}, 0};
  for (;;) {
    const size_t left = kBytes - position % kBytes;
    if (left >= sizeof head) std::memcpy(&head, &bytes_[position % kBytes], sizeof head);
    if (left >= sizeof head && !head.is_gap) break;
    position += left;
  }
  const char* const elements = &bytes_[position % kBytes] + sizeof head;
  position += sizeof head + head.elements_size;
  return {head.receiver, head.indication, head.has_elements, {elements, head.elements_size}};
}

void IndicationLog::Restart() noexcept {
  end_ += kBytes - end_ % kBytes;
  ::madvise(bytes_, kBytes, MADV_DONTNEED);
}

}  // namespace sim
