/// Finds the answer to each request.
#include "server/requests.h"

namespace sim {
namespace {

AnswerFunction FindAnswer(uint32_t id) {
  AnswerFunction answer = FindModemAnswer(id);
  if (answer == nullptr) answer = FindProfileAnswer(id);
  if (answer == nullptr) answer = FindLanAnswer(id);
  return answer;
}

}  // namespace

std::string AnswerRequest(Model& model, uint32_t handle, const Datagram& request, Error error) {
  const Header& header = request.header;
  Caller caller{handle, header.profile};
  std::string record;
  if (error == kGranted) {
    const AnswerFunction answer = request.IsWhole() ? FindAnswer(header.id) : nullptr;
    error = answer != nullptr ? answer(model, caller, request, record) : QMI_ERR_INVALID_ARG_V01;
  }
  return MakeDatagram(header.id, header.transaction, error, record, caller.profile);
}

}  // namespace sim
