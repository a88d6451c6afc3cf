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

/// One function for each message, which finds a reply that is all zero. The reply is sent only when
/// the result is QMI_ERR_NONE_V01.
namespace answer {
#define SIM_ANSWER(name, request, reply) Error name(Model&, Session&, const request&, reply&);
SIM_GENERAL_MESSAGES(SIM_ANSWER)
#undef SIM_ANSWER
#define SIM_ANSWER(name, request, reply) \
  Error name(Model&, Session&, Profile&, const request&, reply&);
SIM_PROFILE_MESSAGES(SIM_ANSWER)
#undef SIM_ANSWER
}  // namespace answer

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
    uint32_t times_left;
  };

  Model& model_;
  std::map<uint32_t, Failure> failures_;
};

/// A datagram that carries `record`.
std::string MakeDatagram(uint32_t id, uint32_t transaction, Error error, const std::string& record);

/// A number of that form and nothing else, at most `max`; decimal, or hexadecimal after 0x.
bool ParseNumber(const std::string& text, uint64_t max, uint64_t& number);

}  // namespace sim
