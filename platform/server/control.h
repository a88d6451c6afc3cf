/// The socket through which programs send commands.
#pragma once

#include <memory>
#include <vector>

#include "server/acceptor.h"
#include "server/commands.h"

namespace sim {

class ControlClient;

/// Accepts programs that control the server and carries out their commands. Each gets its answer
/// when its command has taken effect: a `sleep` or an `advance` when that is over.
class Control : public Activity {
 public:
  Control(asio::io_context& io, Commands& commands, Complaints& complaints);
  ~Control();
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  /// Accepts programs on a listening socket.
  void Accept(Descriptor socket) { acceptor_.Listen(std::move(socket)); }
  void Arm() override;

 private:
  friend class ControlClient;
  void Add(Protocol::socket socket);
  /// Of the programs with so many unread bytes, cuts off the one that has been idle for the longest
  /// time, if that was `patience` or more. Returns false when there is none.
  bool CutIdle(size_t unread, Clock::duration patience, const char* complaint);

  asio::io_context& io_;
  Commands& commands_;
  Complaints& complaints_;
  Acceptor acceptor_;
  /// Bytes of all answers for which there is no room.
  size_t unread_ = 0;
  /// Rings when a `sleep` is over. The loop then arms this activity.
  Alarm alarm_;
  std::vector<std::shared_ptr<ControlClient>> clients_;
};

}  // namespace sim
