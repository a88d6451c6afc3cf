/// Carries out the commands of programs, one at a time for each.
#include "server/control.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "protocol/control.h"
#include "server/readiness.h"

namespace sim {
namespace {

constexpr size_t kMaxClients = 128;
/// Bytes of all unread answers, beyond which no further command is carried out.
constexpr size_t kMaxUnread = size_t{4} << 20;
/// How long a program may be idle when its place or its memory is needed.
constexpr std::chrono::seconds kPatienceForPlace{5}, kPatienceForMemory{1};
/// How often programs that do not read are looked at while no command is carried out.
constexpr Milliseconds kPause{100};

}  // namespace

/// A program that sends commands. Its next command is read when the answer to the one before has
/// been sent, so a program that does not read costs the memory of one answer.
class ControlClient : public std::enable_shared_from_this<ControlClient> {
 public:
  ControlClient(Control& control, Protocol::socket socket)
      : control_(control), socket_(std::move(socket)) {}

  bool IsOpen() const { return socket_.is_open(); }
  /// Since when it neither sends a command nor reads its answer. Never while it waits for a `sleep`
  /// or an `advance`.
  Clock::time_point IdleSince() {
    if (has_answer_ && !awaits_room_) return kNever;
    if (awaits_room_ && reading_.HasGoneOn(socket_.native_handle())) active_at_ = Clock::now();
    return active_at_;
  }
  /// Bytes of an answer for which there is no room.
  size_t UnreadBytes() const { return awaits_room_ ? answer_.capacity() : 0; }
  /// Sends an answer that is due, or waits for whatever comes next. Returns when to be called
  /// again.
  Clock::time_point Arm() {
    if (!watches_end_) {
      Await(asio::socket_base::wait_error, &ControlClient::OnEnd);
      watches_end_ = true;
    }
    if (has_answer_ && !awaits_room_ && control_.commands_.HasReached(awaited_)) {
      if (Clock::now() < answer_at_) return answer_at_;
      Answer();
    }
    if (IsOpen() && !has_answer_ && !awaits_command_ && control_.unread_ <= kMaxUnread) {
      Await(asio::socket_base::wait_read, &ControlClient::OnCommand);
      awaits_command_ = true;
    }
    return kNever;
  }

 private:
  using Handler = void (ControlClient::*)();

  void Await(asio::socket_base::wait_type type, Handler handler) {
    socket_.async_wait(type, [weak = weak_from_this(), handler](const asio::error_code& error) {
      const auto self = weak.lock();
      if (!self || error) return;
      try {
        ((*self).*handler)();
      } catch (...) {
        self->Close();
      }
    });
  }
  void OnEnd() {
    watches_end_ = false;
    // The end of a connection can be reported to one that has taken its place since.
    if (HasEnded(socket_.native_handle())) Close();
  }
  void Close() {
    asio::error_code ignored;
    socket_.close(ignored);
  }

  void OnCommand() {
    awaits_command_ = false;
    if (control_.unread_ <= kMaxUnread) Receive();
  }
  void Receive() {
    std::array<char, kMaxCommandBytes> bytes;
    const ssize_t size =
        ::recv(socket_.native_handle(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_TRUNC);
    if (size < 0) return;  // Nothing has come. An end is reported again.
    if (size == 0) return Close();
    active_at_ = Clock::now();
    const auto length = static_cast<size_t>(size);
    CommandResult result{"the command is too long"};
    if (length <= bytes.size()) result = control_.commands_.Run({bytes.data(), length});
    has_answer_ = true;
    last_ = result.error.empty() ? kTookEffect : kIsWrong;
    answer_ = std::move(result.error.empty() ? result.output : result.error);
    answer_at_ = active_at_ + result.pause.value_or(Milliseconds(0));
    awaited_ = result.awaited.value_or(Timeline::Time());
    if (!result.quits) return;
    Answer();
    control_.io_.stop();
  }
  void OnRoom() {
    awaits_room_ = false;
    Answer();
  }
  void Answer() {
    active_at_ = Clock::now();
    while (has_answer_) {
      const size_t size = std::min(answer_.size(), kMaxAnswerBytes);
      const std::string part =
          (size < answer_.size() ? kMoreFollows : last_) + answer_.substr(0, size);
      if (::send(socket_.native_handle(), part.data(), part.size(), MSG_DONTWAIT) < 0) {
        if (errno != EAGAIN) return Close();
        Await(asio::socket_base::wait_write, &ControlClient::OnRoom);
        awaits_room_ = true;
        reading_.HasGoneOn(socket_.native_handle());
        return;
      }
      has_answer_ = size < answer_.size();
      answer_.erase(0, size);
    }
    std::string().swap(answer_);  // gives its memory back
  }

  Control& control_;
  Protocol::socket socket_;
  bool watches_end_ = false, awaits_command_ = false, awaits_room_ = false;
  bool has_answer_ = false;
  std::string answer_;
  /// The first byte of the last part of the answer.
  char last_{};
  /// When the answer is due.
  Clock::time_point answer_at_{};
  Timeline::Time awaited_{};
  Clock::time_point active_at_ = Clock::now();
  Reading reading_;
};

Control::Control(asio::io_context& io, Commands& commands, Complaints& complaints)
    : io_(io),
      commands_(commands),
      complaints_(complaints),
      acceptor_(io, complaints, [this](Protocol::socket socket) { Add(std::move(socket)); }),
      alarm_(io, [] {}) {}

Control::~Control() = default;

void Control::Arm() {
  acceptor_.Arm();
  const auto is_closed = [](const auto& client) { return !client->IsOpen(); };
  clients_.erase(std::remove_if(clients_.begin(), clients_.end(), is_closed), clients_.end());
  do {
    unread_ = 0;
    for (const auto& client : clients_) unread_ += client->UnreadBytes();
  } while (
      unread_ > kMaxUnread &&
      CutIdle(1, kPatienceForMemory, "a program does not read its answers, connection closed"));
  auto wake_at = unread_ > kMaxUnread ? Clock::now() + kPause : kNever;
  for (const auto& client : clients_) wake_at = std::min(wake_at, client->Arm());
  alarm_.Set(wake_at);
}

void Control::Add(Protocol::socket socket) {
  if (clients_.size() >= kMaxClients)
    CutIdle(0, kPatienceForPlace, "a program was idle, connection closed");
  if (clients_.size() >= kMaxClients)
    return complaints_.Add("too many programs control the server, one refused");
  clients_.push_back(std::make_shared<ControlClient>(*this, std::move(socket)));
}

bool Control::CutIdle(size_t unread, Clock::duration patience, const char* complaint) {
  auto idle = clients_.end();
  for (auto client = clients_.begin(); client != clients_.end(); ++client) {
    const bool is_longer = idle == clients_.end() || (*client)->IdleSince() < (*idle)->IdleSince();
    if ((*client)->UnreadBytes() >= unread && is_longer) idle = client;
  }
  if (idle == clients_.end() || Clock::now() - (*idle)->IdleSince() < patience) return false;
  complaints_.Add(complaint);
  clients_.erase(idle);
  return true;
}

}  // namespace sim
