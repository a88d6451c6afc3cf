/// A client's session with the server: two connections and an indication thread.
#pragma once

#include <pthread.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <type_traits>

#include "client/turns.h"
#include "protocol/descriptor.h"
#include "protocol/messages.h"

namespace sim {

class Socket {
 public:
  int fd() const { return fd_.Get(); }
  /// Returns false when no trusted server accepts before the deadline.
  [[nodiscard]] bool Connect(std::chrono::steady_clock::time_point deadline);
  /// Lets recv return at the deadline at the latest. Returns false when it has passed.
  bool LimitReceiving(std::chrono::steady_clock::time_point deadline);

 private:
  Descriptor fd_;
  std::chrono::milliseconds receiving_limit_{};
};

/// Requests run on the caller's thread, one at a time and in the order of the calls. Each ends
/// within its time limit, which includes the wait for other threads' requests. A session whose
/// server has gone does not connect to a new one, because that server would not know which profile
/// the caller has selected. All its requests then fail at once.
/// The first to notice the loss, a request or the indication thread, reports it in the system log.
///
/// A session belongs to the process that opened it. In a forked child, every request fails at once
/// and the destructor only closes the child's descriptors. Neither touches the connections or a
/// mutex, which a thread of the parent may have held at the moment of the fork.
class Session {
 public:
  using Callback = void (*)(qmi_client_struct*, unsigned int, void*, unsigned int, void*);

  /// Opens both connections. When that fails, HandleOrZero() is 0 and every request fails.
  Session();
  /// Waits for a running callback. Must not be called from the callback.
  ~Session();

  uint32_t HandleOrZero() const { return handle_; }
  /// Starts the indication thread. Returns false when no thread can be started.
  [[nodiscard]] bool Deliver(Callback callback);

  /// Sends a request and waits for its reply. Returns QMI_ERR_NONE_V01 when the request was
  /// granted; after any other result the content of `reply` is unspecified.
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
  /// Opens a session, or joins the one with this ticket. Empty when that fails.
  std::optional<SessionTicket> Open(Socket& socket, const SessionTicket& ticket);
  qmi_error_type_v01 Exchange(Socket& socket, uint32_t id, const void* request, size_t length,
                              Unpacker unpack, void* reply);
  /// Sets lost_ when the server has gone. A request for which there is no room is not sent.
  void Send(const Socket& socket, const Header& header, const void* record, Deadline deadline);
  std::optional<Datagram> Receive(Socket& socket, const Header& request, Deadline deadline);
  bool IsInForkedChild() const { return ::getpid() != process_; }
  void ReceiveIndications();
  /// Logs, once, that the server has gone. Does nothing before the session is open or when it ends.
  void ReportLoss();

  const pid_t process_ = ::getpid();
  const std::chrono::milliseconds limit_;
  const Deadline opening_deadline_;
  Socket requests_;
  Socket indications_;

  Turns turns_;
  /// These belong to the request whose turn it is, until its reply is in or its time is up.
  bool lost_ = false;
  uint32_t transaction_ = 0;
  /// Handle of the profile that the server last confirmed as selected. Every request names it, so a
  /// selection that was given up has no effect on later requests. At first it is the first profile
  /// in the list, or 0 if there is none.
  profile_handle_type_v01 profile_ = 0;
  unsigned char reply_[kMaxDatagramBytes];

  uint32_t handle_ = 0;
  std::atomic<bool> stopping_{false}, loss_reported_{false};
  Callback callback_ = nullptr;
  /// Not a std::thread, because a forked child can neither join nor detach its parent's thread.
  std::optional<pthread_t> thread_;
};

}  // namespace sim
