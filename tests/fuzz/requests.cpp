/// Any requests of two clients, one after the other, to a server with short or full lists.
#include "fuzz.h"
#include "modem_in_memory.h"

namespace {

using sim::Header;
using sim::Lan;

/// Bits of the first byte.
constexpr uint8_t kFullProfiles = 1, kFullLan = 2;
/// Bits of the byte before each request, and its ids beyond those of all messages.
constexpr uint8_t kSecondClient = 0x80, kWrongLength = 0x7E, kRaw = 0x7F;
/// Bit of the byte that gives the size of a record.
constexpr uint8_t kProceeds = 0x80;

struct Client {
  uint32_t handle;
  /// The profile that it last had confirmed.
  uint32_t profile = 0;
};

/// Lists with many or few entries. The first VLANs are mapped to the first profile.
template <size_t kVlans, size_t kMappings>
Lan MakeLan() {
  Lan lan;
  for (size_t i = 0; i < kVlans; ++i)
    lan.vlans.push_back({"eth0", static_cast<int16_t>(i + 2), {}});
  for (size_t i = 0; i < kMappings; ++i) lan.mappings.push_back({101, static_cast<int16_t>(i + 2)});
  return lan;
}

/// Whether a client can read the reply to a granted request.
bool IsReadable(const sim::Datagram& reply) {
  switch (static_cast<sim::MessageId>(reply.header.id)) {
#define SIM_CASE(name, request, reply_type) \
  case sim::MessageId::name: {              \
    sim::message::name::Reply record;       \
    return Unpack(reply, record);           \
  }
    SIM_MESSAGES(SIM_CASE)
#undef SIM_CASE
    default:
      return false;
  }
}

Header Check(const Header& request, std::string bytes) {
  const auto reply =
      sim::ParseDatagram(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
  Require(reply && reply->IsWhole(), "a reply is a whole datagram");
  Require(bytes.size() <= sim::kMaxDatagramBytes, "a client has room for each reply");
  Require(reply->header.id == request.id && reply->header.transaction == request.transaction,
          "a reply names its request");
  Require(reply->header.error != 0 ? reply->record_size == 0 : IsReadable(*reply),
          "a reply carries its record or an error");
  return reply->header;
}

void Check(sim::Model& model) {
  const Lan& lan = model.lan;
  Require(model.modem.profiles().size() <= QCMAP_MSGR_MAX_WWAN_POLICY_V01, "profiles are limited");
  Require(lan.vlans.size() <= QCMAP_MSGR_MAX_VLAN_ENTRIES_V01, "VLANs are limited");
  Require(lan.mappings.size() <= QCMAP_MSGR_MAX_MAPPINGS_V01, "mappings are limited");
  for (const auto& mapping : lan.mappings) {
    Require(model.modem.Find(mapping.profile_handle) != nullptr, "a mapped profile is not deleted");
    Require(std::any_of(lan.vlans.begin(), lan.vlans.end(),
                        [&](const auto& vlan) { return vlan.vlan_id == mapping.vlan_id; }),
            "a mapped VLAN is not deleted");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Lan short_lists = MakeLan<2, 1>();
  static const Lan full_lists =
      MakeLan<QCMAP_MSGR_MAX_VLAN_ENTRIES_V01, QCMAP_MSGR_MAX_MAPPINGS_V01>();
  Input input(data, size);
  const uint8_t start = input.TakeByte();
  ModemInMemory server((start & kFullProfiles) != 0 ? QCMAP_MSGR_MAX_WWAN_POLICY_V01 : 2);
  server.model.lan = (start & kFullLan) != 0 ? full_lists : short_lists;
  Client clients[] = {{5001}, {5002}};
  Header header{};
  while (!input.IsAtEnd()) {
    const uint8_t kind = input.TakeByte(), ending = input.TakeByte();
    const std::string record = input.TakeBytes(ending & ~kProceeds);
    Client& client = clients[(kind & kSecondClient) != 0];
    header.id = kind & ~kSecondClient;
    ++header.transaction;
    header.profile = client.profile;
    header.length = static_cast<uint32_t>(record.size()) + (header.id == kWrongLength);
    std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
    bytes = header.id == kRaw ? record : bytes + record;
    const auto request =
        sim::ParseDatagram(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
    if (!request) continue;
    const Header reply =
        Check(request->header, AnswerRequest(server.model, client.handle, *request, sim::kGranted));
    if (reply.error == 0) client.profile = reply.profile;
    if ((ending & kProceeds) != 0) server.Proceed();
  }
  Check(server.model);
  return 0;
}
