/// Writes what happens as JSON, by the names of the table of records.
#include "server/record.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "protocol/message_text.h"

namespace seam {

template <>
inline constexpr auto kFields<sim::Peer> =
    std::make_tuple(Field{"pid", [](auto& peer) -> auto& { return peer.pid;
}
}
, Field{"program", [](auto& peer) -> auto& {return peer.program;
}
}
, Field{"handle", [](auto& peer) -> auto& {return peer.handle;
}
});

}  // namespace seam

namespace sim {
namespace {

using seam::Printer;

const char* NameOf(uint32_t request) {
  return request < std::size(kMessageNames) ? kMessageNames[request] : "unknown";
}

int64_t Microseconds(Clock::duration time) {
  return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
}

/// Prints the members of an indication's record.
void PutIndication(Printer& printer, const Indication& indication, uint32_t receiver) {
  const bool is_call = indication.id != QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01 &&
                       indication.id != QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01;
  if (is_call) {
    qcmap_msgr_tear_down_wwan_ind_msg_v01 record{};
    record.mobile_ap_handle = indication.mobile_ap_handle.value_or(receiver);
    record.conn_status = static_cast<qcmap_msgr_wwan_status_enum_v01>(indication.status);
    record.profile_handle_valid = indication.profile_handle.has_value();
    record.profile_handle = indication.profile_handle.value_or(0);
    printer.Member("values", record);
  } else {
    qcmap_msgr_status_ind_msg_v01 record{};
    record.status = static_cast<uint32_t>(indication.status);
    printer.Member("values", record);
  }
}

std::string ToHex(std::string_view bytes) {
  std::string digits;
  for (const char c : bytes) {
    char two[sizeof "ff"];
    std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(c));
    digits += two;
  }
  return digits;
}

}  // namespace

Peer PeerOf(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size);
  Peer peer{credentials.pid};
  std::getline(std::ifstream("/proc/" + std::to_string(peer.pid) + "/comm"), peer.program);
  return peer;
}

void Record::Open(const std::string& path, const Timeline& timeline) {
  timeline_ = &timeline;
  // Opening a pipe must not wait for its reader.
  constexpr int kMode = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC | O_NONBLOCK;
  file_ = Descriptor(::open(path.c_str(), kMode, 0600));
  if (!file_.IsOpen()) throw std::system_error(errno, std::generic_category(), path);
  struct stat status {};
  ::fstat(file_.Get(), &status);
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(path + ": is not a regular file");
}

template <typename Put>
void Record::Write(const char* event, Put put) noexcept {
  if (!IsOn()) return;
  try {
    std::string line = "{";
    Printer printer(line);
    printer.Member("model_us", Microseconds(timeline_->Now() - timeline_->start()));
    printer.Member("monotonic_us", Microseconds(Clock::now().time_since_epoch()));
    printer.Member("event", event);
    put(printer, line);
    line += "}\n";
    WriteLine(line);
  } catch (const std::bad_alloc&) {
    LeaveOut(0, ENOMEM);
  }
}

void Record::WriteLine(const std::string& line) noexcept {
  size_t written = 0;
  while (written < line.size()) {
    const ssize_t size = ::write(file_.Get(), line.data() + written, line.size() - written);
    if (size < 0) return LeaveOut(written, errno);
    written += static_cast<size_t>(size);
  }
}

void Record::LeaveOut(size_t written, int error) noexcept {
  struct stat status {};
  ::fstat(file_.Get(), &status);
  // Making a file shorter succeeds even where there is no room.
  if (written > 0)
    static_cast<void>(::ftruncate(file_.Get(), status.st_size - static_cast<off_t>(written)));
  if (has_complained_) return;
  has_complained_ = true;
  char complaint[128];
  std::snprintf(complaint, sizeof complaint, "log: %s, lines are left out\n", std::strerror(error));
  errors_.Print(complaint);
}

void Record::Session(const Peer& peer, const char* state) noexcept {
  Write("session", [&](Printer& printer, std::string&) {
    printer.Member("client", peer);
    printer.Member("state", state);
  });
}

void Record::Request(const Peer& peer, const Datagram& request) noexcept {
  Write("request", [&](Printer& printer, std::string& line) {
    printer.Member("client", peer);
    printer.Member("name", NameOf(request.header.id));
    printer.Member("transaction", request.header.transaction);
    printer.Member("profile", request.header.profile);
    line += ",\"arguments\":{";
    PutArguments(printer, request);
    line += '}';
  });
}

void Record::GivenUp(const Peer& peer, uint32_t request) noexcept {
  Write("given_up", [&](Printer& printer, std::string&) {
    printer.Member("client", peer);
    printer.Member("name", NameOf(request));
  });
}

void Record::Reply(const Peer& peer, std::string reply) noexcept {
  Write("reply", [&](Printer& printer, std::string& line) {
    const auto datagram =
        ParseDatagram(reinterpret_cast<unsigned char*>(reply.data()), reply.size());
    const auto error = static_cast<qmi_error_type_v01>(datagram->header.error);
    printer.Member("client", peer);
    printer.Member("name", NameOf(datagram->header.id));
    printer.Member("transaction", datagram->header.transaction);
    printer.Member("error", error);
    line += ",\"answers\":{";
    if (error == QMI_ERR_NONE_V01) PutAnswers(printer, *datagram);
    line += '}';
  });
}

void Record::Indication(const Peer& peer, const IndicationLog::Entry& entry) noexcept {
  Write("indication", [&](Printer& printer, std::string&) {
    printer.Member("client", peer);
    printer.Member("name", static_cast<seam::IndicationId>(entry.indication.id));
    if (entry.has_elements)
      printer.Member("elements", ToHex(entry.elements));
    else
      PutIndication(printer, entry.indication, peer.handle);
  });
}

void Record::FaultsOf(seam::IndicationId indication, const Befalling& faults) noexcept {
  WriteFaults(nullptr, indication, faults);
}

void Record::FaultsOf(const Peer& peer, uint32_t request, const Befalling& faults) noexcept {
  WriteFaults(&peer, NameOf(request), faults);
}

void Record::FaultsOfConnection(const Befalling& faults) noexcept {
  WriteFaults(nullptr, "connection", faults);
}

template <typename Name>
void Record::WriteFaults(const Peer* peer, Name name, const Befalling& faults) noexcept {
  for (size_t kind = 0; kind < faults.size(); ++kind) {
    if (faults[kind] == 0) continue;
    Write("fault", [&](Printer& printer, std::string&) {
      if (peer != nullptr) printer.Member("client", *peer);
      printer.Member("name", name);
      printer.Member("fault", NameOfFault(static_cast<FaultKind>(kind)));
      printer.Member("argument", faults[kind]);
    });
  }
}

void Record::Command(const std::string& line, const std::string& error) noexcept {
  Write("command", [&](Printer& printer, std::string&) {
    printer.Member("command", line);
    printer.Member("error", error);
  });
}

}  // namespace sim
