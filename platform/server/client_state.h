/// What the server remembers of one client.
#pragma once

#include "protocol/messages.h"

namespace sim {

/// Shared by the client's two connections.
struct ClientState {
  /// Its handle is never 0.
  SessionTicket ticket;
  bool has_both_connections = false;
};

}  // namespace sim
