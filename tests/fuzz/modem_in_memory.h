/// The simulated server without its sockets.
#pragma once

#include <unistd.h>

#include <asio/io_context.hpp>

#include "server/commands.h"
#include "server/complaints.h"
#include "server/hub.h"
#include "server/output.h"
#include "server/requests.h"

/// Calls take no time here, but they make progress only in Proceed().
struct ModemInMemory {
  explicit ModemInMemory(size_t profiles)
      : model{sim::Modem(Io(), {profiles, {}, true, 0, false, {}, 1},
                         [](uint32_t receiver, const sim::Indication& indication) {
                           EmptyHub().Indicate(receiver, indication);
                         }),
              {}},
        commands(model, faults, EmptyHub(), NoRecord()) {}
  /// Ends all calls while what they refer to still exists.
  // NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the fuzzer, which is then right.
  ~ModemInMemory() {
    model.modem.profiles().clear();
    Proceed();
  }

  void Proceed() {
    model.modem.Arm();
    Io().restart();
    Io().poll();
  }
  /// One for all inputs, because it takes long to make.
  static asio::io_context& Io() {
    static asio::io_context io(1);
    return io;
  }

  /// A hub without clients, also one for all inputs.
  static sim::Hub& EmptyHub() {
    static sim::Output errors(Io(), STDERR_FILENO);
    static sim::Complaints complaints(Io(), errors, "fuzz");
    static sim::Faults none;
    static sim::Hub hub(Io(), none, NoRecord(), complaints);
    return hub;
  }
  static sim::Record& NoRecord() {
    static sim::Output errors(Io(), STDERR_FILENO);
    static sim::Record record(errors);
    return record;
  }

  sim::Model model;
  sim::Faults faults;
  sim::Commands commands;
};
