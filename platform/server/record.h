/// The record of everything that happens: a file with one JSON object on each line.
#pragma once

#include <string>

#include "protocol/descriptor.h"
#include "records/table.h"
#include "server/faults.h"
#include "server/indication_log.h"
#include "server/output.h"
#include "server/timeline.h"

namespace sim {

/// The program at the other end of a connection.
struct Peer {
  int pid = 0;
  std::string program{};
  /// The Mobile AP handle of its session; 0 as long as it has none.
  uint32_t handle = 0;
};
/// The peer of a connected socket. It has no handle yet.
Peer PeerOf(int socket);

/// Each line is written at once, so that a killed server loses none. A line that cannot be written
/// is left out, and the first time that is reported.
class Record {
 public:
  explicit Record(Output& errors) : errors_(errors) {}

  /// Records in this file, in place of what it holds, with the time of this model. Throws
  /// std::system_error or std::runtime_error.
  void Open(const std::string& path, const Timeline& timeline);
  /// Whether anything is recorded. Everything below does nothing otherwise.
  bool IsOn() const { return file_.IsOpen(); }

  void Session(const Peer& peer, const char* state) noexcept;
  void Request(const Peer& peer, const Datagram& request) noexcept;
  /// A request that is not carried out, because its caller has given up.
  void GivenUp(const Peer& peer, uint32_t request) noexcept;
  /// The reply, before any fault changes it.
  void Reply(const Peer& peer, std::string reply) noexcept;
  void Indication(const Peer& peer, const IndicationLog::Entry& entry) noexcept;
  void FaultsOf(seam::IndicationId indication, const Befalling& faults) noexcept;
  void FaultsOf(const Peer& peer, uint32_t request, const Befalling& faults) noexcept;
  void FaultsOfConnection(const Befalling& faults) noexcept;
  void Command(const std::string& line, const std::string& error) noexcept;

 private:
  /// Writes one line. `put` gets the printer and the line, and adds to what all lines have.
  template <typename Put>
  void Write(const char* event, Put put) noexcept;
  template <typename Name>
  void WriteFaults(const Peer* peer, Name name, const Befalling& faults) noexcept;
  void WriteLine(const std::string& line) noexcept;
  /// Removes the part of a line that has been written, since the file keeps only whole lines.
  void LeaveOut(size_t written, int error) noexcept;

  Output& errors_;
  const Timeline* timeline_ = nullptr;
  Descriptor file_;
  bool has_complained_ = false;
};

}  // namespace sim
