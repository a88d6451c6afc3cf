/// Prints requests and replies, with the names that the client class gives their values.
#pragma once

#include "protocol/messages.h"
#include "records/printer.h"

namespace sim {

// The values of a message's record, in the order in which the table of requests names them.

template <typename Record>
auto ValuesOf(const Record& record) {
  return std::tie(record);
}
inline std::tuple<> ValuesOf(const Nothing&) {
  return {};
}
/// Without the key, which is a secret.
inline auto ValuesOf(const SessionTicket& ticket) {
  return std::tie(ticket.handle);
}
inline auto ValuesOf(const PolicyUpdate& update) {
  return std::tie(update.update, update.policy);
}
inline auto ValuesOf(const WwanStatus& status) {
  return std::tie(status.v4, status.v6);
}
inline auto ValuesOf(const qcmap_msgr_pdn_to_vlan_mapping_v01& mapping) {
  return std::tie(mapping.vlan_id, mapping.profile_handle);
}
inline auto ValuesOf(const Passthrough& passthrough) {
  return std::tie(passthrough.mode, passthrough.config);
}
inline auto ValuesOf(const MappingList& list) {
  return std::make_tuple(list.count,
                         seam::Counted(list.mappings, list.count, std::size(list.mappings)));
}

constexpr seam::Request kOpenSession = {"OpenSession", {"handle"}, {"handle"}};

/// The names of a message. OpenSession is the only one that is no request of the client class.
// It compares no pointer to a request with null: with UndefinedBehaviorSanitizer, that is no
// constant for GCC 12.
constexpr const seam::Request& NamesOf(MessageId id) {
  const std::string_view name = kMessageNames[static_cast<uint32_t>(id)];
  for (const seam::Request& request : seam::kRequests) {
    if (request.name == name) return request;
  }
  return kOpenSession;
}
#define SIM_HAS_NAMES(message, request, reply) \
  static_assert(NamesOf(MessageId::message).name == std::string_view(#message), #message);
SIM_MESSAGES(SIM_HAS_NAMES)
#undef SIM_HAS_NAMES

template <typename Record, typename Names>
void PutRecord(seam::Printer& printer, const Names& names, const Datagram& datagram) {
  Record record;
  if (Unpack(datagram, record)) printer.Members(names, ValuesOf(record));
}

// Each prints nothing for a message that is unknown or whose record has the wrong size.
#define SIM_PUT(message_name, names, record)                                     \
  case MessageId::message_name:                                                  \
    PutRecord<record>(printer, NamesOf(MessageId::message_name).names, message); \
    break;
#define SIM_PUT_ARGUMENTS(message_name, request, reply) SIM_PUT(message_name, arguments, request)
#define SIM_PUT_ANSWERS(message_name, request, reply) SIM_PUT(message_name, answers, reply)

/// Prints what a request carries as members, such as `"update":"V4","policy":{...}`.
inline void PutArguments(seam::Printer& printer, const Datagram& message) {
  switch (static_cast<MessageId>(message.header.id)) {
    SIM_MESSAGES(SIM_PUT_ARGUMENTS)
    default:
      break;
  }
}
/// The same of a reply that grants its request.
inline void PutAnswers(seam::Printer& printer, const Datagram& message) {
  switch (static_cast<MessageId>(message.header.id)) {
    SIM_MESSAGES(SIM_PUT_ANSWERS)
    default:
      break;
  }
}

#undef SIM_PUT
#undef SIM_PUT_ARGUMENTS
#undef SIM_PUT_ANSWERS

}  // namespace sim
