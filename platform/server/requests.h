/// What the server answers to each request.
#pragma once

#include <map>
#include <string>

#include "server/client_state.h"
#include "server/lan.h"
#include "server/modem.h"

namespace sim {

/// What requests read and change.
struct Model {
  Modem modem;
  Lan lan;
};

constexpr Error kGranted = QMI_ERR_NONE_V01;

/// Answers the request whose record is in `bytes`. When the request is granted, `record` becomes
/// the record of the reply.
using AnswerFunction = Error (*)(Model&, ClientState&, const unsigned char* bytes, size_t length,
                                 std::string& record);
/// Each finds the answer to a message of its group in messages.h; null for any other message.
AnswerFunction FindModemAnswer(uint32_t id);
AnswerFunction FindProfileAnswer(uint32_t id);
AnswerFunction FindLanAnswer(uint32_t id);

/// Decodes the request, has method `kAnswer` of a temporary `Answers` object answer it, and encodes
/// the reply.
template <typename Message, typename Answers, auto kAnswer>
Error AnswerWith(Model& model, ClientState& client, const unsigned char* bytes, size_t length,
                 std::string& record) {
  typename Message::Request request;
  typename Message::Reply reply{};
  if (!Unpack(bytes, length, request)) return QMI_ERR_INVALID_ARG_V01;
  Answers answers(model, client);
  const Error error = answers ? (answers.*kAnswer)(request, reply) : QMI_ERR_INVALID_HANDLE_V01;
  if (error == kGranted) record.assign(reinterpret_cast<const char*>(&reply), WireSize(reply));
  return error;
}

class Requests {
 public:
  explicit Requests(Model& model) : model_(model) {}

  /// The reply to a datagram that has at least a header.
  std::string Answer(ClientState& client, const unsigned char* datagram, size_t size);

  /// Has a request fail from now on, as "REQUEST[:ERROR[:COUNT]]" says. Returns what is wrong with
  /// the text; empty when nothing is.
  std::string Fail(const std::string& text);

 private:
  struct Failure {
    Error error;
    uint64_t times_left;
  };

  Model& model_;
  std::map<uint32_t, Failure> failures_;
};

/// A datagram that carries `record`.
std::string MakeDatagram(uint32_t id, uint32_t transaction, Error error, const std::string& record);

}  // namespace sim
