/// Stores indications one behind the other and starts over at the end of the ring.
#include "server/indication_log.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <type_traits>

namespace sim {
namespace {

/// What stands before the elements of an entry.
struct Head {
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
  const Head head{entry.has_elements, entry.receiver, entry.indication,
                  static_cast<uint32_t>(entry.elements.size())};
  end_ = Place(end_);
  char* const place = &bytes_[end_ % kBytes];
  std::memcpy(place, &head, sizeof head);
  if (!entry.elements.empty())
    std::memcpy(place + sizeof head, entry.elements.data(), entry.elements.size());
  end_ += sizeof head + entry.elements.size();
}

IndicationLog::Entry IndicationLog::Next(Position& position) const {
  position = Place(position);
  const char* const place = &bytes_[position % kBytes];
  Head head;
  std::memcpy(&head, place, sizeof head);
  position += sizeof head + head.elements_size;
  return {
      head.receiver, head.indication, head.has_elements, {place + sizeof head, head.elements_size}};
}

IndicationLog::Position IndicationLog::Place(Position end) {
  const size_t left = kBytes - end % kBytes;
  return left < sizeof(Head) + kMaxElementBytes ? end + left : end;
}

void IndicationLog::Restart() noexcept {
  end_ += kBytes - end_ % kBytes;
  ::madvise(bytes_, kBytes, MADV_DONTNEED);
}

}  // namespace sim
