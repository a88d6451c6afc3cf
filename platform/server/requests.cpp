/// Finds the answer to a request, or the failure that was asked for.
#include "server/requests.h"

#include <charconv>

namespace sim {
namespace {

/// The session's current profile; null when it has been deleted, or when there is none at all.
Profile* Current(Modem& modem, Session& session) {
  if (session.profile == 0 && !modem.profiles().empty())
    session.profile = modem.profiles().front().handle;
  return modem.Find(session.profile);
}

template <typename Message, auto kAnswer>
Error AnswerTo(Model& model, Session& session, const unsigned char* bytes, size_t length,
               std::string& record) {
  typename Message::Request request;
  typename Message::Reply reply{};
  if (!Unpack(bytes, length, request)) return QMI_ERR_INVALID_ARG_V01;
  Error error = QMI_ERR_INVALID_HANDLE_V01;
  if constexpr (std::is_invocable_v<decltype(kAnswer), Model&, Session&, decltype((request)),
                                    decltype((reply))>) {
    error = kAnswer(model, session, request, reply);
  } else if (Profile* const profile = Current(model.modem, session); profile != nullptr) {
    error = kAnswer(model, session, *profile, request, reply);
  }
  if (error == QMI_ERR_NONE_V01)
    record.assign(reinterpret_cast<const char*>(&reply), WireSize(reply));
  return error;
}

struct Row {
  const char* name;
  Error (*answer)(Model&, Session&, const unsigned char*, size_t, std::string&);
};

#define SIM_ROW(name, request, reply) {#name, AnswerTo<message::name, answer::name>},
constexpr Row kRows[] = {SIM_MESSAGES(SIM_ROW)};
#undef SIM_ROW

constexpr uint64_t kAlways = UINT32_MAX;

}  // namespace

std::string MakeDatagram(uint32_t id, uint32_t transaction, Error error,
                         const std::string& record) {
  const Header header{id, transaction, error, static_cast<uint32_t>(record.size())};
  return std::string(reinterpret_cast<const char*>(&header), sizeof header) + record;
}

bool ParseNumber(const std::string& text, uint64_t max, uint64_t& number) {
  const bool is_hex = text.compare(0, 2, "0x") == 0;
  const char* const end = text.data() + text.size();
  const auto parsed =
      std::from_chars(text.data() + (is_hex ? 2 : 0), end, number, is_hex ? 16 : 10);
  return parsed.ec == std::errc() && parsed.ptr == end && number <= max;
}

std::string Requests::Answer(Session& session, const unsigned char* datagram, size_t size) {
  Header header;
  std::memcpy(&header, datagram, sizeof header);
  std::string record;
  Error error = QMI_ERR_INVALID_ARG_V01;
  const auto failure = failures_.find(header.id);
  if (failure != failures_.end()) {
    error = failure->second.error;
    if (failure->second.times_left != kAlways && --failure->second.times_left == 0)
      failures_.erase(failure);
  } else if (header.id < std::size(kRows) && header.length == size - sizeof header) {
    error =
        kRows[header.id].answer(model_, session, datagram + sizeof header, header.length, record);
  }
  return MakeDatagram(header.id, header.transaction, error, record);
}

std::string Requests::Fail(const std::string& text) {
  const size_t first = text.find(':');
  const size_t second = first == std::string::npos ? first : text.find(':', first + 1);
  const std::string name = text.substr(0, first);
  uint64_t error = QMI_ERR_INTERNAL_V01, count = kAlways;
  if (first != std::string::npos &&
      (!ParseNumber(text.substr(first + 1, second - first - 1), INT32_MAX, error) || error == 0))
    return "the error of '" + text + "' is not a number above 0";
  if (second != std::string::npos &&
      (!ParseNumber(text.substr(second + 1), kAlways - 1, count) || count == 0))
    return "the count of '" + text + "' is not a number above 0";
  for (uint32_t id = message::EnableMobileAP::kId; id < std::size(kRows); ++id) {
    if (name != kRows[id].name) continue;
    failures_[id] = {static_cast<Error>(error), static_cast<uint32_t>(count)};
    return {};
  }
  return "there is no request '" + name + "'";
}

}  // namespace sim
