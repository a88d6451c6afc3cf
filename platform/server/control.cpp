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
/// A program keeps its place for so long without a command.
constexpr std::chrono::seconds kPatience{5};
/// Bytes of all answers that wait for their readers.
constexpr size_t kMaxUnread = size_t{4} << 20;

}  // namespace

/// A program that sends commands. Its next command is read when the answer to the one before has
/// been sent, so a program that does not read costs the memory of one answer.
class ControlClient : public std::enable_shared_from_this<ControlClient> {
 public:
  ControlClient(asio::io_context& io, Commands& commands, Protocol::socket socket)
      : io_(io), commands_(commands), socket_(std::move(socket)) {}

  bool IsOpen() const { return socket_.is_open(); }
  /// When it was answered last, or when its answer is due.
  Clock::time_point answer_at() const { return answer_at_; }
  bool IsSilent() const { return !has_answer_ && Clock::now() - answer_at_ >= kPatience; }
  /// Bytes that its answer holds until it has been sent.
  size_t UnreadBytes() const { return has_answer_ ? answer_.capacity() : 0; }
  void Close() {
    asio::error_code ignored;
    socket_.close(ignored);
  }
  /// Sends an answer that is due, or waits for whatever comes next. Returns when to be called
  /// again.
  Clock::time_point Arm() {
    if (!watches_end_) {
      Await(asio::socket_base::wait_error, &ControlClient::OnEnd);
      watches_end_ = true;
    }
    if (has_answer_ && !awaits_socket_ && commands_.HasReached(awaited_)) {
      if (Clock::now() < answer_at_) return answer_at_;
      Answer();
    }
    if (IsOpen() && !has_answer_ && !awaits_socket_) {
      Await(asio::socket_base::wait_read, &ControlClient::Receive);
      awaits_socket_ = true;
    }
    return kNever;
  }

 private:
  using Handler = void (ControlClient::*)();

  void Await(asio::socket_base::wait_type type, Handler handler) {
    socket_.async_wait(type, [weak = weak_from_this(), handler](const asio::error_code& error) {
      const auto self = weak.lock();
      if (!self || error) return;
      self->awaits_socket_ = false;
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
  void Receive() {
    std::array<char, kMaxCommandBytes> bytes;
    const ssize_t size =
        ::recv(socket_.native_handle(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_TRUNC);
    if (size < 0) return;  // Nothing has come. An end is reported again.
    if (size == 0) return Close();
    const auto length = static_cast<size_t>(size);
    CommandResult result{"the command is too long"};
    if (length <= bytes.size()) result = commands_.Run({bytes.data(), length});
    has_answer_ = true;
    last_ = result.error.empty() ? kTookEffect : kIsWrong;
    answer_ = std::move(result.error.empty() ? result.output : result.error);
    answer_at_ = Clock::now() + result.pause.value_or(Milliseconds(0));
    awaited_ = result.awaited.value_or(Timeline::Time());
    if (!result.quits) return;
    Answer();
    io_.stop();
  }
  void Answer() {
    while (has_answer_) {
      const size_t size = std::min(answer_.size(), kMaxAnswerBytes);
      const std::string part =
          (size < answer_.size() ? kMoreFollows : last_) + answer_.substr(0, size);
      if (::send(socket_.native_handle(), part.data(), part.size(), MSG_DONTWAIT) < 0) {
        if (errno != EAGAIN) return Close();
        Await(asio::socket_base::wait_write, &ControlClient::Answer);
        awaits_socket_ = true;
        return;
      }
      has_answer_ = size < answer_.size();
      answer_.erase(0, size);
    }
    answer_ = std::string();  // without its memory
  }

  asio::io_context& io_;
  Commands& commands_;
  Protocol::socket socket_;
  bool watches_end_ = false;
  /// Whether it waits to receive a command or to send the rest of an answer.
  bool awaits_socket_ = false;
  bool has_answer_ = false;
  std::string answer_;
  /// The first byte of the last part of the answer.
  char last_{};
  Clock::time_point answer_at_ = Clock::now();
  Timeline::Time awaited_{};
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
  if (clients_.empty()) return;
  auto wake_at = kNever;
  for (const auto& client : clients_) wake_at = std::min(wake_at, client->Arm());
  alarm_.Set(wake_at);
  LimitUnread();
  const auto is_closed = [](const auto& client) { return !client->IsOpen(); };
  clients_.erase(std::remove_if(clients_.begin(), clients_.end(), is_closed), clients_.end());
}

void Control::Add(Protocol::socket socket) {
  if (clients_.size() >= kMaxClients) CutSilent();
  if (clients_.size() >= kMaxClients)
    return complaints_.Add("too many programs control the server, one refused");
  clients_.push_back(std::make_shared<ControlClient>(io_, commands_, std::move(socket)));
}

void Control::CutSilent() {
  const auto silent = std::find_if(clients_.begin(), clients_.end(),
                                   [](const auto& client) { return client->IsSilent(); });
  if (silent == clients_.end()) return;
  complaints_.Add("a program sent no command, connection closed");
  clients_.erase(silent);
}

void Control::LimitUnread() {
  size_t unread = 0;
  for (const auto& client : clients_) unread += client->UnreadBytes();
  while (unread > kMaxUnread) {
    const auto oldest =
        std::min_element(clients_.begin(), clients_.end(), [](const auto& one, const auto& other) {
          return std::pair(one->UnreadBytes() == 0, one->answer_at()) <
                 std::pair(other->UnreadBytes() == 0, other->answer_at());
        });
    complaints_.Add("a program does not read its answers, connection closed");
    unread -= (*oldest)->UnreadBytes();
    clients_.erase(oldest);
  }
}

}  // namespace sim
