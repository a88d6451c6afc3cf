/// Any datagrams to a client: as the replies that open its session, as replies to any one of its
/// requests, and as indications.
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>

#include "every_request.h"
#include "peer.h"

namespace {

using sim::Header;

/// How each datagram of the input is sent. The first four say what in its header is right.
constexpr uint8_t kRightId = 1, kRightTransaction = 2, kRightLength = 4, kNoError = 8,
                  kAsIndication = 16, kWithoutHeader = 32;
/// Instead of all these bits: an empty datagram, which ends the session.
constexpr uint8_t kEmpty = 0xFF;
/// In place of a request: the input opens a session.
constexpr uint8_t kOpens = 0xFF;
/// A little more than a client has room for.
constexpr size_t kMaxRecordBytes = sizeof(sim::VlanList) + 100;
constexpr uint32_t kLastIndication = 0xFFFFFFFF;

uint32_t IdOf(const Request& request) {
  uint32_t id = 0;
  while (std::strcmp(sim::kMessageNames[id], request.name) != 0) ++id;
  return id;
}

/// A client and its server. They serve one input after the other, until one ends the session.
class World {
 public:
  World() {
    ::setenv("QCMAP_TIMEOUT_MS", "60000", 1);
    Open();
  }

  void CountInput() { ++inputs_; }
  /// Opens a session with the datagrams of the input, then a valid one.
  void OpenWith(Input& input) {
    if (!MayEnd()) return;
    Connect([&](Peer::Connection connection, const Header& request) {
      SendAll(input, connection, request);
      peer_.Reply(connection, request, "", QMI_ERR_INTERNAL_V01);
    });
    Open();
  }
  /// Sends the datagrams of the input as replies and indications. The last reply is a refusal, so
  /// the client need not wait for any other.
  void Send(const Request& request, Input& input) {
    Header expected{};
    expected.id = IdOf(request);
    expected.transaction = transaction_ + 1;
    const size_t sent = SendAll(input, Peer::kRequests, expected);
    peer_.Reply(Peer::kRequests, expected, "", QMI_ERR_INTERNAL_V01);
    qmi_error_type_v01 error{};
    const bool granted = request.send(*client_, &error);
    Require(granted == (error == 0), "a request is granted or has an error");
    if (granted) CheckRecords();
    if (!ReadOn(sent)) Open();
  }

 private:
  template <typename Answer>
  void Connect(Answer answer) {
    client_.reset();
    client_ = peer_.Serve([] { return std::make_unique<QCMAP_Client>(&OnIndication); }, answer);
  }
  void Open() {
    Connect([this](Peer::Connection connection, const Header& request) {
      peer_.OpenSession(connection, request);
      transaction_ = request.transaction;
    });
    Require(client_->mobile_ap_handle == kMobileApHandle, "a session is opened");
    is_closed_ = has_indications_ = false;
    ++sessions_;
  }
  /// Making a session takes as long as dozens of requests. So all of the first inputs may end it,
  /// the kept ones among them, and then one of 64.
  bool MayEnd() const { return sessions_ <= 1000 + inputs_ / 64; }
  /// Leaves room in the socket, so that what follows is not lost. Returns the number of datagrams.
  size_t SendAll(Input& input, Peer::Connection connection, const Header& expected) {
    size_t sent = 0;
    for (size_t left = 2 * kMaxRecordBytes; !input.IsAtEnd() && left > 0; ++sent) {
      const uint8_t kind = input.TakeByte();
      if (kind == kEmpty && !MayEnd()) continue;
      Header header = expected;
      if ((kind & kRightId) == 0) header.id = input.TakeNumber();
      if ((kind & kRightTransaction) == 0) header.transaction = input.TakeNumber();
      if ((kind & kNoError) == 0) header.error = static_cast<int32_t>(input.TakeNumber());
      const size_t size = (input.TakeNumber() & 0xFFFF) % kMaxRecordBytes;
      left -= std::min(left, size);
      std::string record = input.TakeBytes(size);
      record.resize(size);
      header.length = (kind & kRightLength) != 0 ? static_cast<uint32_t>(size) : input.TakeNumber();
      if ((kind & kWithoutHeader) == 0) record.insert(0, Peer::Bytes(header));
      if (kind == kEmpty) record.clear();
      if (kind != kEmpty && record.empty()) continue;
      is_closed_ |= kind == kEmpty;
      const bool as_indication = (kind & kAsIndication) != 0;
      has_indications_ |= as_indication;
      peer_.Send(as_indication ? Peer::kIndications : connection, record);
    }
    return sent;
  }
  /// Has the client receive all that was sent. Returns false when its session has ended.
  bool ReadOn(size_t sent) {
    if (is_closed_) return false;
    for (bool is_read = false; !is_read && sent > 0; --sent) {
      transaction_ = peer_.TakeRequests(Peer::kRequests).transaction;
      if (transaction_ == 0) return false;
      Header request{};
      request.id = sim::message::GetMobileAPStatus::kId;
      request.transaction = transaction_ + 1;
      qmi_error_type_v01 error{};
      qcmap_msgr_mobile_ap_status_enum_v01 status{};
      peer_.Reply(Peer::kRequests, request, Peer::Bytes(status));
      is_read = client_->GetMobileAPStatus(&status, &error);
    }
    transaction_ = peer_.TakeRequests(Peer::kRequests).transaction;
    if (transaction_ == 0) return false;
    if (has_indications_) AwaitIndications();
    return true;
  }
  void AwaitIndications() {
    Header last{};
    last.id = kLastIndication;
    peer_.Send(Peer::kIndications, Peer::Bytes(last));
    std::unique_lock<std::mutex> lock(mutex_);
    const bool came =
        arrived_.wait_for(lock, std::chrono::seconds(20), [] { return last_has_arrived_; });
    Require(came, "an indication is delivered");
    last_has_arrived_ = has_indications_ = false;
  }
  static void OnIndication(qmi_client_struct*, unsigned id, void* bytes, unsigned length, void*) {
    const volatile auto* const elements = static_cast<unsigned char*>(bytes);
    for (unsigned i = 0; i < length; ++i) static_cast<void>(elements[i]);
    if (id != kLastIndication) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    last_has_arrived_ = true;
    arrived_.notify_one();
  }
  /// Checks all records that a request may have written to.
  static void CheckRecords() {
    const auto* const policies = static_cast<sim::PolicyList*>(Anything{});
    const auto* const vlans = static_cast<sim::VlanList*>(Anything{});
    const auto* const mappings = static_cast<int*>(Anything{});
    unsigned char flag;
    std::memcpy(&flag, static_cast<bool*>(Anything{}), sizeof flag);
    Require(policies->policy_list_len <= QCMAP_MSGR_MAX_WWAN_POLICY_V01, "a list ends in time");
    Require(vlans->vlan_config_len <= QCMAP_MSGR_MAX_VLAN_ENTRIES_V01, "a list ends in time");
    Require(*mappings >= 0 && *mappings <= int{QCMAP_MSGR_MAX_MAPPINGS_V01}, "a list ends in time");
    Require(flag <= 1, "a flag is 0 or 1");
  }

  static inline std::mutex mutex_;
  static inline std::condition_variable arrived_;
  static inline bool last_has_arrived_ = false;

  Peer peer_;
  std::unique_ptr<QCMAP_Client> client_;
  uint32_t transaction_ = 0;
  bool is_closed_ = false, has_indications_ = false;
  size_t inputs_ = 0, sessions_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static World world;
  world.CountInput();
  Input input(data, size);
  const uint8_t choice = input.TakeByte();
  if (choice == kOpens) {
    world.OpenWith(input);
  } else {
    world.Send(kEveryRequest[choice % std::size(kEveryRequest)], input);
  }
  return 0;
}
