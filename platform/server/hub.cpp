/// Accepts clients and sends indications to them.
#include "server/hub.h"

#include <algorithm>

#include "server/connection.h"

namespace sim {
namespace {

constexpr size_t kMaxConnections = 256;
constexpr size_t kMaxDelayed = 10000;
/// No client has it.
constexpr uint32_t kForeignHandle = 5000;
/// An element that ends before its value does.
constexpr char kMalformed[] = {kMobileApHandleElement, 4, 0, 0, 0};

}  // namespace

Hub::Hub(asio::io_context& io, Faults& faults, Record& record, Complaints& complaints)
    : faults_(faults),
      record_(record),
      complaints_(complaints),
      acceptor_(
          io, complaints, [this](Protocol::socket socket) { AddClient(std::move(socket)); },
          [this] { PrepareClient(); }),
      alarm_(io, [this] { OnTime(); }) {
  connections_.reserve(kMaxConnections);
  delayed_.reserve(kMaxDelayed);
}

Hub::~Hub() = default;

void Hub::Accept(Descriptor socket, Model& model) {
  model_ = &model;
  acceptor_.Listen(std::move(socket));
}

void Hub::Arm() {
  if (some_are_closed_) {
    const auto is_closed = [](const auto& connection) { return !connection->IsOpen(); };
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(), is_closed),
                       connections_.end());
    some_are_closed_ = false;
  }
  alarm_.Set(wake_at_);
  acceptor_.Arm();
}

void Hub::PrepareClient() {
  faults_of_next_ = faults_.TakeForConnection();
  record_.FaultsOfConnection(faults_of_next_);
  Reach(kBefore, faults_of_next_);
}

void Hub::AddClient(Protocol::socket socket) {
  Reach(kAfter, faults_of_next_);
  if (connections_.size() >= kMaxConnections)
    return complaints_.Add("too many connections, one refused");
  connections_.push_back(std::make_shared<Connection>(*this, std::move(socket)));
  connections_.back()->Start();
}

void Hub::OnTime() {
  wake_at_ = kNever;
  const auto now = Clock::now();
  SendDelayed(now);
  for (const auto& connection : connections_) {
    connection->OnTime(now);
    WakeAt(connection->NextTime());
  }
}

std::shared_ptr<ClientState> Hub::Join(const SessionTicket& ticket) {
  for (const auto& connection : connections_) {
    const auto& client = connection->client_;
    if (client == nullptr || client->has_both_connections || !(client->ticket == ticket)) continue;
    client->has_both_connections = true;
    connection->opening_limit_ = kNever;
    return client;
  }
  return nullptr;
}

void Hub::OnClose(const ClientState* client) noexcept {
  some_are_closed_ = true;
  if (client == nullptr) return;
  for (const auto& connection : connections_)
    if (connection->client_.get() == client) connection->Close();
}

void Hub::Indicate(uint32_t receiver, const Indication& indication) noexcept {
  if (faults_.AreNone()) return Add({receiver, indication});
  const Befalling faults = faults_.TakeForIndication(indication.id);
  record_.FaultsOf(static_cast<seam::IndicationId>(indication.id), faults);
  IndicationLog::Entry entry{receiver, indication};
  if (faults[kMisdirect] != 0) entry.indication.mobile_ap_handle = kForeignHandle;
  if (faults[kMalform] != 0) {
    entry.has_elements = true;
    entry.elements = {kMalformed, sizeof kMalformed};
  }
  if (faults[kLose] != 0) return;
  for (int times = faults[kRepeat] != 0 ? 2 : 1; times > 0; --times) {
    if (faults[kDelay] != 0) {
      Delay(Milliseconds(faults[kDelay]), entry);
    } else {
      Add(entry);
    }
  }
}

void Hub::Delay(Milliseconds delay, const IndicationLog::Entry& entry) noexcept {
  if (delayed_.size() == kMaxDelayed) {
    complaints_.Add("too many indications are delayed, one sent at once");
    return Add(entry);
  }
  delayed_.push_back({Clock::now() + delay, entry});
  WakeAt(delayed_.back().until);
}

void Hub::SendDelayed(Clock::time_point now) noexcept {
  const auto is_due = [now](const Delayed& delayed) { return delayed.until <= now; };
  for (const Delayed& delayed : delayed_) {
    if (is_due(delayed)) {
      Add(delayed.entry);
    } else {
      WakeAt(delayed.until);
    }
  }
  delayed_.erase(std::remove_if(delayed_.begin(), delayed_.end(), is_due), delayed_.end());
}

void Hub::IndicateRaw(uint32_t id, std::string_view elements) noexcept {
  Add({0, {id, 0}, true, elements});
}

bool Hub::AwaitsReaders() const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [](const auto& connection) { return connection->IsCatchingUp(); });
}

void Hub::Add(const IndicationLog::Entry& entry) noexcept {
  // They are recorded when they happen, not when a slow client has room for them.
  if (record_.IsOn()) {
    for (const auto& connection : connections_)
      if (connection->IsFor(entry)) record_.Indication(connection->peer_, entry);
  }
  log_.Add(entry);
  bool all_are_sent = true;
  for (const auto& connection : connections_) {
    connection->SendIndications();
    all_are_sent = all_are_sent && connection->HasSentAll();
  }
  if (!all_are_sent || !log_.IsWorthRestarting()) return;
  log_.Restart();
  for (const auto& connection : connections_) connection->position_ = log_.end();
}

}  // namespace sim
