/// The client class of the preloaded library, and two functions on which the program's events and
/// log depend. Each reports its call and forwards it, or lets a recording answer it.
#include <mox/util/process_control.h>
#include <qcmap_client.h>
#include <qmi_client.h>

#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

#include "protocol/messages.h"
#include "real.h"
#include "records/reader.h"
#include "tracer.h"

namespace trace {
namespace {

using Callback = void(qmi_client_struct*, unsigned int, void*, unsigned int, void*);
using Decoder = decltype(qmi_client_message_decode);

/// What the program would use without this library. Each client that is made looks for it, since a
/// library can have been loaded again. Later the loader's lock may be held by a thread that waits
/// for an indication or, in a forked child, by no thread at all.
struct Real {
  std::atomic<void*> constructor{nullptr}, destructor{nullptr}, decoder{nullptr};
  std::atomic<void*> requests[std::size(seam::kRequests)] = {};

  void Find() {
    const Unnoticed unnoticed;
    constructor = FindReal("_ZN12QCMAP_ClientC1EPFvP17qmi_client_structjPvjS2_E");
    destructor = FindReal("_ZN12QCMAP_ClientD1Ev");
    decoder = FindReal("qmi_client_message_decode");
#define FIND(name, request, reply)                       \
  requests[seam::FindRequest(#name) - seam::kRequests] = \
      FindRealMethod(AddressOf(&QCMAP_Client::name));
    SIM_MODEM_MESSAGES(FIND) SIM_PROFILE_MESSAGES(FIND) SIM_LAN_MESSAGES(FIND)
#undef FIND
  }
  template <typename Function>
  static Function* As(const std::atomic<void*>& found) {
    return reinterpret_cast<Function*>(found.load());
  }
} real;

/// One of the program's clients. The object itself has no room for this.
struct Client {
  std::atomic<const QCMAP_Client*> object{nullptr};
  Callback* callback = nullptr;
  /// 0 while it is not a client.
  std::atomic<unsigned> number{0};
};
constexpr size_t kMaxClients = 32;
Client clients[kMaxClients];

/// Null for an object without a place. Places without an object are found by null.
Client* Find(const QCMAP_Client* object) {
  for (Client& client : clients) {
    if (client.object == object) return &client;
  }
  return nullptr;
}

/// An object whose end was not seen leaves its place to the next one at its address. Null when all
/// places are taken.
Client* MakePlace(const QCMAP_Client* object, Callback* callback) {
  static std::mutex mutex;
  static unsigned made = 0;
  const Unnoticed unnoticed;
  const std::lock_guard<std::mutex> lock(mutex);
  Client* place = Find(object);
  if (place == nullptr) place = Find(nullptr);
  if (place == nullptr) {
    Complain("there are too many clients: the indications of one are not traced");
    return nullptr;
  }
  place->callback = callback;
  place->number = ++made;
  place->object = object;
  return place;
}

/// Has `forward` make a call, or a recording answer it. `answers` makes a tuple.
template <typename Arguments, typename Answers, typename Forward>
bool Perform(const seam::Request& names, const Client* client, const Arguments& arguments,
             const Answers& answers, qmi_error_type_v01* error, const Forward& forward) {
  Tracer& tracer = Tracer::Get();
  Event call = tracer.Begin(names, client != nullptr ? client->number.load() : 0);
  call.returned = call.ok = false;
  call.error = QMI_ERR_INTERNAL_V01;
  const auto report = [&](Event* ended) {
    ended->took_us = Now() - ended->at_us;
    tracer.Report(*ended, names, arguments, answers);
  };
  // Reports a call that throws, too. Unlike a handler, this does not change where a program ends if
  // nobody catches the exception.
  const std::unique_ptr<Event, decltype(report)&> at_end(&call, report);
  if (Replay* const replay = tracer.replay()) {
    const std::string text = tracer.Text(seam::Printer::kJson, names.arguments, arguments);
    call.arguments.text = text;
    const Event* const recorded = replay->IsOwnProcess() ? replay->Take(call) : nullptr;
    if (recorded != nullptr)
      std::tie(call.ok, call.error) = std::tie(recorded->ok, recorded->error);
    if (error != nullptr) *error = call.error;
    if (call.ok) seam::Reader(recorded->answer.text.substr(1)).Members(names.answers, answers());
  } else {
    call.ok = forward();
    call.error = error != nullptr ? *error : QMI_ERR_NONE_V01;
  }
  call.returned = true;
  return call.ok;
}

template <typename... Types>
std::tuple<Types...> ParametersOf(bool (QCMAP_Client::*)(Types...));
template <size_t kIndex, typename Method>
using Parameter = std::tuple_element_t<kIndex, decltype(ParametersOf(Method()))>;

constexpr auto kNoAnswers = [] { return std::tuple<>(); };

template <typename Value>
auto ArgumentOf(Value value) {
  if constexpr (std::is_pointer_v<Value>)
    return std::tuple<>();
  else
    return std::make_tuple(value);
}
template <typename Value>
auto AnswerOf(Value value) {
  if constexpr (std::is_pointer_v<Value> && !std::is_same_v<Value, qmi_error_type_v01*>)
    return std::tie(*value);
  else
    return std::tuple<>();
}

template <auto kMethod, typename... Values>
bool Forward(const seam::Request& names, QCMAP_Client* client, Values... values) {
  void* const found = real.requests[&names - seam::kRequests];
  if (found != nullptr) return (client->*MethodAt(found, kMethod))(values...);
  auto* const error = std::get<qmi_error_type_v01*>(std::make_tuple(values...));
  if (error != nullptr) *error = QMI_ERR_INTERNAL_V01;
  return false;
}

/// A request whose arguments are passed by value, and whose answers are pointers.
template <auto kMethod, typename... Values>
bool Send(const seam::Request& names, QCMAP_Client* client, Values... values) {
  return Perform(
      names, Find(client), std::tuple_cat(ArgumentOf(values)...),
      [&] { return std::tuple_cat(AnswerOf(values)...); },
      std::get<qmi_error_type_v01*>(std::make_tuple(values...)),
      [&] { return Forward<kMethod>(names, client, values...); });
}

/// What the decoder returns for a message that it does not know.
constexpr int kUnknown = 1;

struct Indication {
  seam::IndicationId id{};
  uintptr_t handle = 0;
  uint32_t length = 0;
  int decoded = kUnknown;
  /// Those about a call and those about a status have different records.
  union {
    qcmap_msgr_tear_down_wwan_ind_msg_v01 call;
    qcmap_msgr_status_ind_msg_v01 status;
  } record{};

  auto Arguments() { return std::tie(id, handle, length); }
};

/// Calls `with` with the record, unless the kind of the indication is unknown.
template <typename With>
void WithRecord(Indication& indication, const With& with) {
  switch (static_cast<uint32_t>(indication.id)) {
    case QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01:
      return with(indication.record.call);
    case QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01:
    case QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01:
      return with(indication.record.status);
    default:
      return;
  }
}

void Report(unsigned client, Indication& indication) {
  Tracer& tracer = Tracer::Get();
  const Event event = tracer.Begin(kIndication, client);
  if (indication.decoded != 0) {
    tracer.Report(event, kIndication, indication.Arguments(),
                  [&] { return std::tie(indication.decoded); });
    return;
  }
  WithRecord(indication, [&](const auto& record) {
    tracer.Report(event, kIndication, indication.Arguments(),
                  [&] { return std::tie(indication.decoded, record); });
  });
}

Indication Decode(qmi_client_struct* handle, unsigned id, const void* bytes, unsigned length) {
  const Unnoticed unnoticed;
  Indication indication{seam::IndicationId{id}, reinterpret_cast<uintptr_t>(handle), length};
  const bool is_long =
      id == QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01 || id == QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01;
  auto* const decode = Real::As<Decoder>(real.decoder);
  WithRecord(indication, [&](auto& record) {
    qcmap_msgr_bring_up_wwan_ind_msg_v01 whole{};
    const auto size = static_cast<unsigned>(is_long ? sizeof whole : sizeof record);
    if (decode != nullptr)
      indication.decoded = decode(handle, QMI_IDL_INDICATION, id, bytes, length, &whole, size);
    std::memcpy(&record, &whole, sizeof record);
  });
  return indication;
}

/// A callback for each place, since a callback is not told its client.
template <size_t kPlace>
void OnIndication(qmi_client_struct* handle, unsigned id, void* bytes, unsigned length,
                  void* user) {
  const Client& client = clients[kPlace];
  Indication indication = Decode(handle, id, bytes, length);
  Report(client.number, indication);
  client.callback(handle, id, bytes, length, user);
}
template <size_t... kPlaces>
constexpr std::array<Callback*, kMaxClients> Callbacks(std::index_sequence<kPlaces...>) {
  return {&OnIndication<kPlaces>...};
}
constexpr auto kCallbacks = Callbacks(std::make_index_sequence<kMaxClients>());

}  // namespace

/// An indication of a recording.
static Indication Read(const Event& event) {
  Indication indication;
  seam::Reader(event.arguments.text.substr(1))
      .Members(kIndication.arguments, indication.Arguments());
  seam::Reader answer(event.answer.text.substr(1));
  answer.Member(kIndication.answers[0], indication.decoded);
  if (indication.decoded == 0)
    WithRecord(indication, [&](auto& record) { answer.Member(kIndication.answers[1], record); });
  return indication;
}

// The sender's bytes were not recorded. The number of the event in their place leads the decoder to
// the record, also when the program has copied them.
void Deliver(const Event& event, uint32_t number) {
  Indication indication = Read(event);
  Report(event.client, indication);
  std::vector<unsigned char> bytes(std::max<size_t>(indication.length, sizeof number));
  std::memcpy(bytes.data(), &number, sizeof number);
  qmi_client_struct* handle;
  std::memcpy(&handle, &indication.handle, sizeof indication.handle);
  for (const Client& client : clients) {
    if (client.number == event.client && client.callback != nullptr)
      client.callback(handle, static_cast<unsigned>(indication.id), bytes.data(), indication.length,
                      nullptr);
  }
}

/// The same as the decoder of the modem's library, while a recording is played.
static int DecodePlayed(const Replay& replay, unsigned id, const void* bytes, unsigned length,
                        void* record, size_t record_size) {
  uint32_t number = 0;
  if (length < sizeof number) return kUnknown;
  std::memcpy(&number, bytes, sizeof number);
  if (number >= replay.events().size()) return kUnknown;
  const Indication indication = Read(replay.events()[number]);
  if (static_cast<unsigned>(indication.id) != id) return kUnknown;
  if (indication.decoded == 0) {
    std::memset(record, 0, record_size);
    std::memcpy(record, &indication.record, std::min(record_size, sizeof indication.record));
  }
  return indication.decoded;
}

}  // namespace trace

QCMAP_Client::QCMAP_Client(trace::Callback* callback) : mobile_ap_handle(0), state_(nullptr) {
  static_cast<void>(state_);
  trace::Client* const place = trace::MakePlace(this, callback);
  const auto free = [](trace::Client* of_failed) { of_failed->object = nullptr; };
  std::unique_ptr<trace::Client, decltype(free)> guard(place, free);
  const auto forward = [&] {
    trace::real.Find();
    auto* const real =
        trace::Real::As<void(QCMAP_Client*, trace::Callback*)>(trace::real.constructor);
    const auto number = static_cast<size_t>(place - trace::clients);
    const bool is_traced = place != nullptr && callback != nullptr;
    if (real != nullptr) {
      real(this, is_traced ? trace::kCallbacks[number] : callback);
    } else {
      const trace::Unnoticed unnoticed;
      trace::Complain("no library of this program has the client class; its calls fail");
    }
    return true;
  };
  trace::Perform(
      trace::kConstructor, place, std::tuple(), [this] { return std::tie(mobile_ap_handle); },
      nullptr, forward);
  static_cast<void>(guard.release());
}

QCMAP_Client::~QCMAP_Client() {
  trace::Client* const place = trace::Find(this);
  const auto forward = [this] {
    auto* const real = trace::Real::As<void(QCMAP_Client*)>(trace::real.destructor);
    if (real != nullptr) real(this);
    return true;
  };
  trace::Perform(trace::kDestructor, place, std::tuple(), trace::kNoAnswers, nullptr, forward);
  if (place == nullptr) return;
  const unsigned number = place->number.exchange(0);
  trace::Replay* const replay = trace::Tracer::Get().replay();
  if (replay != nullptr && replay->IsOwnProcess()) replay->AwaitEnd(number);
  place->object = nullptr;
}

// Types and names of parameters are those of the class. The number says how many there are.
#define SEND(name, ...)                                                     \
  static constexpr const seam::Request& kNames = *seam::FindRequest(#name); \
  return trace::Send<&QCMAP_Client::name>(kNames, this, __VA_ARGS__)
#define TYPE(name, index) trace::Parameter<index, decltype(&QCMAP_Client::name)>
#define REQUEST_1(name)                      \
  bool QCMAP_Client::name(TYPE(name, 0) a) { \
    SEND(name, a);                           \
  }
#define REQUEST_2(name)                                       \
  bool QCMAP_Client::name(TYPE(name, 0) a, TYPE(name, 1) b) { \
    SEND(name, a, b);                                         \
  }
#define REQUEST_3(name)                                                        \
  bool QCMAP_Client::name(TYPE(name, 0) a, TYPE(name, 1) b, TYPE(name, 2) c) { \
    SEND(name, a, b, c);                                                       \
  }

REQUEST_1(EnableMobileAP)
REQUEST_2(GetMobileAPStatus)

REQUEST_2(GetWWANPolicyList)
REQUEST_2(SetWWANProfileHandlePreference)

REQUEST_2(GetWWANPolicy)
REQUEST_2(SetWWANPolicy)
REQUEST_3(UpdateWWANPolicy)
REQUEST_2(CreateWWANPolicy)
REQUEST_1(DeleteWWANPolicy)

REQUEST_2(SetAutoconnect)
REQUEST_2(GetAutoconnect)
REQUEST_2(SetRoaming)
REQUEST_2(GetRoaming)
REQUEST_1(EnableIPV4)
REQUEST_1(DisableIPV4)
REQUEST_1(EnableIPV6)
REQUEST_1(DisableIPV6)
REQUEST_2(GetIPv4State)
REQUEST_2(GetIPv6State)

REQUEST_3(GetWWANStatus)
REQUEST_2(ConnectBackHaul)
REQUEST_2(DisconnectBackHaul)

REQUEST_3(GetWWANStatistics)
REQUEST_2(ResetWWANStatistics)
REQUEST_3(GetNetworkConfiguration)

REQUEST_2(GetLANConfig)
REQUEST_2(SetLANConfig)
REQUEST_1(ActivateLAN)

REQUEST_2(DeleteVLANConfig)
REQUEST_2(GetVLANConfig)

REQUEST_3(AddPDNToVLANMapping)
REQUEST_3(DeletePDNToVLANMapping)

REQUEST_3(GetIPPassthroughConfig)
REQUEST_2(GetIPPassthroughState)

// What is shown of the others, and then all that is passed on.
#define PERFORM(name, arguments, answers, ...)                                      \
  static constexpr const seam::Request& kNames = *seam::FindRequest(#name);         \
  return trace::Perform(kNames, trace::Find(this), arguments, answers, error, [&] { \
    return trace::Forward<&QCMAP_Client::name>(kNames, this, __VA_ARGS__);          \
  })

bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error,
                                 bool* flag) {
  bool nobodys = false;
  const auto answers = [&] { return std::tie(flag != nullptr ? *flag : nobodys); };
  PERFORM(SetVLANConfig, std::make_tuple(config), answers, config, error, flag);
}

bool QCMAP_Client::GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* mappings, int* count,
                                        qmi_error_type_v01* error) {
  const auto answers = [&] {
    const auto list = seam::Counted(mappings, *count, QCMAP_MSGR_MAX_MAPPINGS_V01);
    return std::tuple_cat(std::tie(*count), std::make_tuple(list));
  };
  PERFORM(GetPDNtoVLANMappings, std::tuple(), answers, mappings, count, error);
}

bool QCMAP_Client::SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01 mode, bool flag,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  PERFORM(SetIPPassthroughConfig, std::make_tuple(mode, *config, flag), trace::kNoAnswers, mode,
          flag, config, error);
}

extern "C" int qmi_client_message_decode(qmi_client_type client, int message_type,
                                         unsigned int message_id, const void* bytes,
                                         unsigned int length, void* record,
                                         unsigned int record_size) {
  const trace::Replay* const replay = trace::Tracer::Get().replay();
  if (replay != nullptr)
    return trace::DecodePlayed(*replay, message_id, bytes, length, record, record_size);
  if (trace::real.decoder == nullptr) trace::real.Find();
  auto* const real = trace::Real::As<trace::Decoder>(trace::real.decoder);
  if (real == nullptr) return trace::kUnknown;
  return real(client, message_type, message_id, bytes, length, record, record_size);
}

int mox::util::ProcessControl::GetPidByProcessName(std::string name, int limit) {
  int pid = -1;
  const auto forward = [&] {
    auto* const method = &ProcessControl::GetPidByProcessName;
    void* const found = trace::FindRealMethod(trace::AddressOf(method));
    if (found != nullptr) pid = trace::MethodAt(found, method)(name, limit);
    return true;
  };
  trace::Perform(
      trace::kProbe, nullptr, std::tie(name, limit), [&] { return std::tie(pid); }, nullptr,
      forward);
  return pid;
}
