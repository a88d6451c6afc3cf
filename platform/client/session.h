/// A session with the server: its two connections and its indication thread.
#pragma once

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

#include "protocol/messages.h"

namespace sim {

class Socket {
 public:
  explicit Socket(int fd = -1) : fd_(fd) {}
  ~Socket() {
    if (fd_ >= 0) ::close(fd_);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  int fd() const { return fd_; }

 private:
  const int fd_;
};

/// Requests are answered on the caller's thread, one at a time, each within the time limit of its
/// call. A session that has lost its server does not look for another one, which would not know
/// the profile that the caller believes selected: its requests fail at once from then on.
class Session {
 public:
  using Callback = void (*)(qmi_client_struct*, unsigned int, void*, unsigned int, void*);

  /// Opens both connections. When that fails, HandleOrZero() is 0 and every request fails.
  Session();
  /// Waits for the callback that is running. Not to be called from the callback.
  ~Session();

  uint32_t HandleOrZero() const { return handle_; }
  /// Starts the indication thread. Throws std::system_error when there can be none.
  void Deliver(Callback callback);

  /// Sends a request and waits for its reply. Returns QMI_ERR_NONE_V01 when it was granted and
  /// `reply` is written; after any other result `reply` is unspecified.
  template <typename Message>
  qmi_error_type_v01 Call(const typename Message::Request& request,
                          typename Message::Reply& reply) {
    using Request = typename Message::Request;
    return Exchange(requests_, Message::kId, &request,
                    std::is_empty_v<Request> ? 0 : sizeof request,
                    UnpackInto<typename Message::Reply>, &reply);
  }

 private:
  using Deadline = std::chrono::steady_clock::time_point;
  using Unpacker = bool (*)(const Datagram&, void*);

  template <typename Record>
  static bool UnpackInto(const Datagram& datagram, void* record) {
    return Unpack(datagram, *static_cast<Record*>(record));
  }
  uint32_t Open(const Socket& socket, uint32_t handle);
  qmi_error_type_v01 Exchange(const Socket& socket, uint32_t id, const void* request, size_t length,
                              Unpacker unpack, void* reply);
  bool Send(int fd, const Header& header, const void* record, Deadline deadline);
  std::optional<Datagram> Receive(int fd, const Header& request, Deadline deadline);
  void ReceiveIndications(Callback callback);

  const std::chrono::milliseconds limit_;
  const Deadline opening_deadline_;
  const Socket requests_;
  const Socket indications_;

  /// Guards `busy_`. What follows belongs to the one request that has set it, for its whole round
  /// trip.
  std::mutex mutex_;
  std::condition_variable idle_;
  bool busy_ = false;
  bool lost_ = false;
  uint32_t transaction_ = 0;
  unsigned char reply_[kMaxDatagramBytes];

  uint32_t handle_ = 0;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace sim
