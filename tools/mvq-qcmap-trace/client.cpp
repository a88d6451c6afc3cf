/// The client class of the preloaded library, and two functions on which the program's events and
/// log depend. Each reports its call and forwards it, or lets a recording answer it.
#include <mox/util/process_control.h>
#include <pthread.h>
#include <qcmap_client.h>
#include <qmi_client.h>

#include <array>
#include <utility>
#include <vector>

#include "real.h"
#include "tracer.h"

namespace trace {
namespace {

using Callback = void(qmi_client_struct*, unsigned int, void*, unsigned int, void*);

/// One of the program's clients. The object itself has no room for this.
struct Client {
  std::atomic<const QCMAP_Client*> object{nullptr};
  unsigned number = 0;
  Callback* callback = nullptr;
  /// The thread of its indications while a recording is played.
  pthread_t thread{};
  bool stopping = true;
};

constexpr size_t kMaxClients = 32;
Client clients[kMaxClients];
std::atomic<unsigned> clients_made{0};

constexpr auto kNone = [] { return std::tuple<>(); };
/// What the decoder returns for a message that it does not know.
constexpr int kUnknown = 1;

struct DecodedIndication {
  seam::IndicationId id{};
  uint64_t handle = 0;
  uint32_t length = 0;
  int result = kUnknown;
  IndicationRecord record{};
};
/// What this thread delivers while a recording is played.
thread_local const DecodedIndication* played = nullptr;

Client* Find(const QCMAP_Client* object) {
  for (Client& client : clients) {
    if (client.object == object) return &client;
  }
  return nullptr;
}

/// An object whose end was not seen leaves its place to the next one at its address. Null when all
/// places are taken.
Client* MakePlace(const QCMAP_Client* object, Callback* callback) {
  Client* place = Find(object);
  for (size_t i = 0; place == nullptr && i < kMaxClients; ++i) {
    const QCMAP_Client* none = nullptr;
    if (clients[i].object.compare_exchange_strong(none, object)) place = &clients[i];
  }
  if (place == nullptr) {
    Complain("there are too many clients: the indications of one are not traced");
    return nullptr;
  }
  place->number = ++clients_made;
  place->callback = callback;
  return place;
}

unsigned NumberOf(const Client* client) {
  return client != nullptr ? client->number : 0;
}

/// Has `forward` make a call, or a recording answer it. `arguments` and `answers` make tuples.
template <typename Arguments, typename Answers, typename Forward>
bool Perform(const seam::Request& names, unsigned client, const Arguments& arguments,
             const Answers& answers, qmi_error_type_v01* error, const Forward& forward) {
  Tracer& tracer = Tracer::Get();
  Event call{names.name, client, tracer.Count()};
  const auto values = arguments();
  if (Replay* const replay = tracer.replay()) {
    replay->Answer(call, names, tracer.Text(seam::Printer::kJson, names.arguments, values),
                   answers);
    if (error != nullptr) *error = call.error;
  } else {
    call.ok = forward();
    if (error != nullptr) call.error = *error;
  }
  call.took = Clock::now() - call.start;
  tracer.Report(call, names, values, answers);
  return call.ok;
}

void Report(unsigned client, const DecodedIndication& indication) {
  Tracer& tracer = Tracer::Get();
  const Event event{kIndication.name, client, {}};
  const auto arguments = std::tie(indication.id, indication.handle, indication.length);
  if (indication.result != 0) {
    tracer.Report(event, kIndication, arguments, [&] { return std::tie(indication.result); });
  } else {
    WithRecord(indication.id, indication.record, [&](const auto& record) {
      tracer.Report(event, kIndication, arguments,
                    [&] { return std::tie(indication.result, record); });
    });
  }
  tracer.CountCome();
}

auto* FindDecoder() {
  static std::atomic<void*> cache{nullptr};
  return FindRealFunction<decltype(qmi_client_message_decode)>("qmi_client_message_decode", cache);
}

DecodedIndication Decode(qmi_client_struct* handle, unsigned id, const void* bytes,
                         unsigned length) {
  const Unnoticed unnoticed;
  DecodedIndication indication{seam::IndicationId{id}, reinterpret_cast<uintptr_t>(handle), length};
  const bool is_long =
      id == QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01 || id == QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01;
  auto* const decode = FindDecoder();
  WithRecord(indication.id, indication.record, [&](auto& record) {
    qcmap_msgr_bring_up_wwan_ind_msg_v01 whole{};
    const auto size = static_cast<unsigned>(is_long ? sizeof whole : sizeof record);
    if (decode != nullptr)
      indication.result = decode(handle, QMI_IDL_INDICATION, id, bytes, length, &whole, size);
    std::memcpy(&record, &whole, sizeof record);
  });
  return indication;
}

/// A callback for each place, since a callback is not told its client.
template <size_t kPlace>
void OnIndication(qmi_client_struct* handle, unsigned id, void* bytes, unsigned length,
                  void* user) {
  const Client& client = clients[kPlace];
  Report(client.number, Decode(handle, id, bytes, length));
  struct AtReturn {
    ~AtReturn() { Tracer::Get().CountReturned(); }
  } const at_return;
  client.callback(handle, id, bytes, length, user);
}
template <size_t... kPlaces>
constexpr std::array<Callback*, kMaxClients> Callbacks(std::index_sequence<kPlaces...>) {
  return {&OnIndication<kPlaces>...};
}
constexpr auto kCallbacks = Callbacks(std::make_index_sequence<kMaxClients>());

DecodedIndication FromRecording(const RecordedEvent& event) {
  DecodedIndication indication;
  seam::Reader arguments(event.arguments), answers(event.answers);
  arguments.Expect("{");
  arguments.Members(kIndication.arguments,
                    std::tie(indication.id, indication.handle, indication.length));
  answers.Expect("{");
  answers.Member("decoded", indication.result);
  if (indication.result == 0)
    WithRecord(indication.id, indication.record,
               [&](auto& record) { answers.Member("record", record); });
  return indication;
}

void* PlayIndications(void* place) {
  Client& client = *static_cast<Client*>(place);
  Replay& replay = *Tracer::Get().replay();
  while (const RecordedEvent* const event =
             replay.BeginIndication(client.number, client.stopping)) {
    const DecodedIndication indication = FromRecording(*event);
    Report(client.number, indication);
    std::vector<unsigned char> bytes(std::max(indication.length, 1u));
    played = &indication;
    const auto number = static_cast<uintptr_t>(indication.handle);
    qmi_client_struct* handle;
    std::memcpy(&handle, &number, sizeof number);
    if (client.callback != nullptr)
      client.callback(handle, static_cast<unsigned>(indication.id), bytes.data(), indication.length,
                      nullptr);
    played = nullptr;
    replay.EndIndication();
  }
  return nullptr;
}

}  // namespace
}  // namespace trace

QCMAP_Client::QCMAP_Client(trace::Callback* callback) : mobile_ap_handle(0), state_(nullptr) {
  static_cast<void>(state_);
  trace::Client* const place = trace::MakePlace(this, callback);
  trace::Perform(
      trace::kConstructor, trace::NumberOf(place), trace::kNone,
      [this] { return std::tie(mobile_ap_handle); }, nullptr,
      [&] {
        static std::atomic<void*> cache{nullptr};
        auto* const real = trace::FindRealFunction<void(QCMAP_Client*, trace::Callback*)>(
            "_ZN12QCMAP_ClientC1EPFvP17qmi_client_structjPvjS2_E", cache);
        const bool is_traced = place != nullptr && callback != nullptr;
        if (real != nullptr)
          real(this, is_traced ? trace::kCallbacks[static_cast<size_t>(place - trace::clients)]
                               : callback);
        return true;
      });
  if (place == nullptr || trace::Tracer::Get().replay() == nullptr) return;
  const trace::Unnoticed unnoticed;  // the thread inherits that signals are held back
  place->stopping = false;
  if (::pthread_create(&place->thread, nullptr, trace::PlayIndications, place) != 0)
    place->stopping = true;
}

QCMAP_Client::~QCMAP_Client() {
  trace::Client* const place = trace::Find(this);
  trace::Perform(trace::kDestructor, trace::NumberOf(place), trace::kNone, trace::kNone, nullptr,
                 [this] {
                   static std::atomic<void*> cache{nullptr};
                   auto* const real =
                       trace::FindRealFunction<void(QCMAP_Client*)>("_ZN12QCMAP_ClientD1Ev", cache);
                   if (real != nullptr) real(this);
                   return true;
                 });
  if (place == nullptr) return;
  trace::Replay* const replay = trace::Tracer::Get().replay();
  if (replay != nullptr && replay->IsOwnProcess() && !place->stopping) {
    replay->Stop(place->number, place->stopping);
    ::pthread_join(place->thread, nullptr);
  }
  place->object = nullptr;
}

/// `arguments` is a list in parentheses, of the values in the order of the table.
#define FORWARD(name, arguments, answers, ...)                                               \
  static constexpr const seam::Request& kNames = *seam::FindRequest(#name);                  \
  return trace::Perform(                                                                     \
      kNames, trace::NumberOf(trace::Find(this)), [&] { return std::make_tuple arguments; }, \
      answers, error,                                                                        \
      [&] {                                                                                  \
        const auto real = trace::FindRealMethod<&QCMAP_Client::name>();                      \
        if (real != nullptr) return (this->*real)(__VA_ARGS__);                              \
        if (error != nullptr) *error = QMI_ERR_INTERNAL_V01;                                 \
        return false;                                                                        \
      })
#define ANSWERS(...) [&] { return std::tie(__VA_ARGS__); }

#define ORDER(name)                                    \
  bool QCMAP_Client::name(qmi_error_type_v01* error) { \
    FORWARD(name, (), trace::kNone, error);            \
  }
#define ORDER_WITH(name, type)                                     \
  bool QCMAP_Client::name(type value, qmi_error_type_v01* error) { \
    FORWARD(name, (value), trace::kNone, value, error);            \
  }
#define ORDER_WITH_TWO(name, first_type, second_type)                                        \
  bool QCMAP_Client::name(first_type first, second_type second, qmi_error_type_v01* error) { \
    FORWARD(name, (first, second), trace::kNone, first, second, error);                      \
  }
#define READ(name, type)                                            \
  bool QCMAP_Client::name(type* value, qmi_error_type_v01* error) { \
    FORWARD(name, (), ANSWERS(*value), value, error);               \
  }
#define READ_TWO(name, first_type, second_type)                                                \
  bool QCMAP_Client::name(first_type* first, second_type* second, qmi_error_type_v01* error) { \
    FORWARD(name, (), ANSWERS(*first, *second), first, second, error);                         \
  }
#define READ_WITH(name, key_type, type)                                           \
  bool QCMAP_Client::name(key_type key, type* value, qmi_error_type_v01* error) { \
    FORWARD(name, (key), ANSWERS(*value), key, value, error);                     \
  }

ORDER(EnableMobileAP)
READ(GetMobileAPStatus, qcmap_msgr_mobile_ap_status_enum_v01)

READ(GetWWANPolicyList, qcmap_msgr_wwan_policy_list_resp_msg_v01)
ORDER_WITH(SetWWANProfileHandlePreference, unsigned int)

READ(GetWWANPolicy, qcmap_msgr_net_policy_info_v01)
ORDER_WITH(SetWWANPolicy, qcmap_msgr_net_policy_info_v01)
ORDER_WITH_TWO(UpdateWWANPolicy, qcmap_msgr_update_profile_enum_v01, qcmap_msgr_net_policy_info_v01)
ORDER_WITH(CreateWWANPolicy, qcmap_msgr_net_policy_info_v01)
ORDER(DeleteWWANPolicy)

ORDER_WITH(SetAutoconnect, unsigned char)
READ(GetAutoconnect, unsigned char)
ORDER_WITH(SetRoaming, unsigned char)
READ(GetRoaming, unsigned char)
ORDER(EnableIPV4)
ORDER(DisableIPV4)
ORDER(EnableIPV6)
ORDER(DisableIPV6)
READ(GetIPv4State, unsigned char)
READ(GetIPv6State, unsigned char)

READ_TWO(GetWWANStatus, qcmap_msgr_wwan_status_enum_v01, qcmap_msgr_wwan_status_enum_v01)
ORDER_WITH(ConnectBackHaul, qcmap_msgr_wwan_call_type_v01)
ORDER_WITH(DisconnectBackHaul, qcmap_msgr_wwan_call_type_v01)

READ_WITH(GetWWANStatistics, qcmap_msgr_ip_family_enum_v01, qcmap_msgr_wwan_statistics_type_v01)
ORDER_WITH(ResetWWANStatistics, qcmap_msgr_ip_family_enum_v01)
READ_WITH(GetNetworkConfiguration, qcmap_msgr_ip_family_enum_v01, qcmap_nw_params_t)

READ(GetLANConfig, qcmap_msgr_lan_config_v01)
ORDER_WITH(SetLANConfig, qcmap_msgr_lan_config_v01)
ORDER(ActivateLAN)

bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error,
                                 bool* flag) {
  bool nobodys = false;
  FORWARD(SetVLANConfig, (config), ANSWERS(flag != nullptr ? *flag : nobodys), config, error, flag);
}

ORDER_WITH(DeleteVLANConfig, qcmap_msgr_vlan_config_v01)
READ(GetVLANConfig, qcmap_msgr_vlan_conf_t)

ORDER_WITH_TWO(AddPDNToVLANMapping, short, unsigned int)
ORDER_WITH_TWO(DeletePDNToVLANMapping, short, unsigned int)

bool QCMAP_Client::GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* mappings, int* count,
                                        qmi_error_type_v01* error) {
  const auto answers = [&] {
    const auto list = seam::Counted(mappings, *count, QCMAP_MSGR_MAX_MAPPINGS_V01);
    return std::tuple_cat(std::tie(*count), std::make_tuple(list));
  };
  FORWARD(GetPDNtoVLANMappings, (), answers, mappings, count, error);
}

bool QCMAP_Client::SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01 mode, bool flag,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  FORWARD(SetIPPassthroughConfig, (mode, *config, flag), trace::kNone, mode, flag, config, error);
}

READ_TWO(GetIPPassthroughConfig, qcmap_msgr_ip_passthrough_mode_enum_v01,
         qcmap_msgr_ip_passthrough_config_v01)
READ(GetIPPassthroughState, unsigned char)

extern "C" int qmi_client_message_decode(qmi_client_type client, int message_type,
                                         unsigned int message_id, const void* bytes,
                                         unsigned int length, void* record,
                                         unsigned int record_size) {
  if (trace::Tracer::Get().replay() == nullptr) {
    auto* const real = trace::FindDecoder();
    if (real == nullptr) return trace::kUnknown;
    return real(client, message_type, message_id, bytes, length, record, record_size);
  }
  using trace::played;
  if (played == nullptr || static_cast<unsigned>(played->id) != message_id) return trace::kUnknown;
  if (played->result == 0) {
    std::memset(record, 0, record_size);
    std::memcpy(record, &played->record, std::min<size_t>(record_size, sizeof played->record));
  }
  return played->result;
}

int mox::util::ProcessControl::GetPidByProcessName(std::string name, int limit) {
  int pid = -1;
  trace::Perform(
      trace::kProbe, 0, [&] { return std::make_tuple(name, limit); }, [&] { return std::tie(pid); },
      nullptr,
      [&] {
        const auto real = trace::FindRealMethod<&ProcessControl::GetPidByProcessName>();
        if (real != nullptr) pid = real(name, limit);
        return true;
      });
  return pid;
}
