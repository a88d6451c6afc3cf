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
  void Add(Protocol::socket socket);
  /// Cuts off a program that has been silent for a while, so that another one has its place.
  void CutSilent();
  /// Cuts off the programs that have not read their answers for the longest time.
  void LimitUnread();

  asio::io_context& io_;
  Commands& commands_;
  Complaints& complaints_;
  Acceptor acceptor_;
  /// Rings when a `sleep` is over. The loop then arms this activity.
  Alarm alarm_;
  std::vector<std::shared_ptr<ControlClient>> clients_;
};

}  // namespace sim
