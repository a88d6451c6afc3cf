/// Answers requests, or refuses them as an option or a console command has asked.
#include "server/requests.h"

#include "numbers/parse_number.h"

namespace sim {
namespace {

constexpr uint64_t kAlways = UINT64_MAX;

}  // namespace

std::string Requests::Answer(uint32_t handle, const Datagram& request) {
  const Header& header = request.header;
  Caller caller{handle, header.profile};
  std::string record;
  Error error = QMI_ERR_INVALID_ARG_V01;
  const auto failure = failures_.find(header.id);
  if (failure != failures_.end()) {
    error = failure->second.error;
    if (failure->second.times_left != kAlways && --failure->second.times_left == 0)
      failures_.erase(failure);
  } else if (request.IsWhole()) {
    AnswerFunction answer = FindModemAnswer(header.id);
    if (answer == nullptr) answer = FindProfileAnswer(header.id);
    if (answer == nullptr) answer = FindLanAnswer(header.id);
    if (answer != nullptr) error = answer(model_, caller, request, record);
  }
  return MakeDatagram(header.id, header.transaction, error, record, caller.profile);
}

std::string Requests::Fail(const std::string& text) {
  const size_t first = std::min(text.find(':'), text.size());
  const size_t second = std::min(text.find(':', first + 1), text.size());
  const std::string name = text.substr(0, first);
  uint64_t error = QMI_ERR_INTERNAL_V01, count = kAlways;
  if (first < text.size() &&
      (!ParseNumber(text.substr(first + 1, second - first - 1), INT32_MAX, error) || error == 0))
    return "the error of '" + text + "' is not a number above 0";
  if (second < text.size() &&
      (!ParseNumber(text.substr(second + 1), kAlways - 1, count) || count == 0))
    return "the count of '" + text + "' is not a number above 0";
  for (uint32_t id = 0; id < message::OpenSession::kId; ++id) {
    if (name != kMessageNames[id]) continue;
    failures_[id] = {static_cast<Error>(error), count};
    return {};
  }
  return "there is no request '" + name + "'";
}

}  // namespace sim
