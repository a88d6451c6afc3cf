/// What the server answers to each request.
#pragma once

#include <map>
#include <string>

#include "server/model.h"

namespace sim {

/// What the server remembers of a client.
struct Session {
  /// The Mobile AP handle, never 0.
  uint32_t handle;
  /// The profile selected last; 0 until the first request for one, which takes the list's first.
  profile_handle_type_v01 profile = 0;
};

constexpr Error kGranted = QMI_ERR_NONE_V01;

/// Answers a request, whose record is taken from `bytes`; writes the reply's when it is granted.
using AnswerFunction = Error (*)(Model&, Session&, const unsigned char* bytes, size_t length,
                                 std::string& record);
/// Null when the message is not one of theirs.
AnswerFunction FindCallAnswer(uint32_t id);
AnswerFunction FindLanAnswer(uint32_t id);

/// An answer by the method `kAnswer` of a new `Answers`, which that makes of model and session.
template <typename Message, typename Answers, auto kAnswer>
Error AnswerWith(Model& model, Session& session, const unsigned char* bytes, size_t length,
                 std::string& record) {
  typename Message::Request request;
  typename Message::Reply reply{};
  if (!Unpack(bytes, length, request)) return QMI_ERR_INVALID_ARG_V01;
  Answers answers(model, session);
  const Error error = answers ? (answers.*kAnswer)(request, reply) : QMI_ERR_INVALID_HANDLE_V01;
  if (error == kGranted) record.assign(reinterpret_cast<const char*>(&reply), WireSize(reply));
  return error;
}

class Requests {
 public:
  explicit Requests(Model& model) : model_(model) {}

  /// The reply to a datagram that has at least a header.
  std::string Answer(Session& session, const unsigned char* datagram, size_t size);

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

/// A number of that form and nothing else, at most `max`; decimal, or hexadecimal after 0x.
bool ParseNumber(const std::string& text, uint64_t max, uint64_t& number);

}  // namespace sim
