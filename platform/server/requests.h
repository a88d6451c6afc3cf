/// Answers the clients' requests.
#pragma once

#include <string>

#include "server/lan.h"
#include "server/modem.h"

namespace sim {

/// What requests read and change.
struct Model {
  Modem modem;
  Lan lan;
};

constexpr Error kGranted = QMI_ERR_NONE_V01;

/// Who sent a request, and which profile it is about.
struct Caller {
  /// The client's Mobile AP handle.
  uint32_t handle;
  /// Handle of the profile that the client has selected. 0 means that there was none when it opened
  /// its session. A request that needs a profile then takes the first in the list.
  profile_handle_type_v01 profile;
};

/// Answers a request. When the request is granted, `record` becomes the record of the reply.
using AnswerFunction = Error (*)(Model&, Caller&, const Datagram&, std::string& record);
/// Each finds the answer to a message of its group in messages.h; null for any other message.
AnswerFunction FindModemAnswer(uint32_t id);
AnswerFunction FindProfileAnswer(uint32_t id);
AnswerFunction FindLanAnswer(uint32_t id);

/// Decodes the request, has method `kAnswer` of a temporary `Answers` object answer it, and encodes
/// the reply.
template <typename Message, typename Answers, auto kAnswer>
Error AnswerWith(Model& model, Caller& caller, const Datagram& datagram, std::string& record) {
  typename Message::Request request;
  typename Message::Reply reply{};
  if (!Unpack(datagram, request)) return QMI_ERR_INVALID_ARG_V01;
  Answers answers(model, caller);
  const Error error = answers ? (answers.*kAnswer)(request, reply) : QMI_ERR_INVALID_HANDLE_V01;
  if (error == kGranted) record.assign(reinterpret_cast<const char*>(&reply), WireSize(reply));
  return error;
}

/// Returns the datagram of the reply to the client with this handle. The request is refused with
/// `error` unless that is QMI_ERR_NONE_V01.
std::string AnswerRequest(Model& model, uint32_t handle, const Datagram& request, Error error);

}  // namespace sim
