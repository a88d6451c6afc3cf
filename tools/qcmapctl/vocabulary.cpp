/// The words by which the tool names families, technologies, states and interfaces.
#include "vocabulary.h"

namespace qcmapctl {
namespace {

template <typename Value>
std::string Find(const Words<Value>& words, Value value, const char* otherwise) {
  for (const auto& [word, meaning] : words) {
    if (meaning == value) return word;
  }
  return otherwise;
}

}  // namespace

const Words<IPFamily>& FamilyWords() {
  static const Words<IPFamily> words = {
      {"ipv4", IPFamily::IPV4}, {"ipv6", IPFamily::IPV6}, {"ipv4v6", IPFamily::IPV4V6}};
  return words;
}

const Words<Tech>& TechWords() {
  static const Words<Tech> words = {
      {"3gpp", Tech::TECH_3GPP}, {"3gpp2", Tech::TECH_3GPP2}, {"any", Tech::ANY}};
  return words;
}

const Words<ConnectStatus>& StateWords() {
  static const Words<ConnectStatus> words = {{"connected", ConnectStatus::CONNECTED},
                                             {"connecting", ConnectStatus::CONNECTING},
                                             {"disconnected", ConnectStatus::DISCONNECTED},
                                             {"disconnecting", ConnectStatus::DISCONNECTING},
                                             {"unknown", ConnectStatus::UNKNOWN},
                                             {"up", ConnectStatus::CONNECTED},
                                             {"down", ConnectStatus::DISCONNECTED}};
  return words;
}

const Words<bool>& SwitchWords() {
  static const Words<bool> words = {{"on", true}, {"off", false}};
  return words;
}

const Words<int32_t>& InterfaceWords() {
  static const Words<int32_t> words = {{"rndis0", 1}, {"ecm0", 2}, {"eth0", 3},
                                       {"1", 1},      {"2", 2},    {"3", 3}};
  return words;
}

std::string WordOf(IPFamily family) {
  return Find(FamilyWords(), family, "none");
}

std::string WordOf(Tech tech) {
  return Find(TechWords(), tech, "any");
}

std::string WordOf(ConnectStatus state) {
  return Find(StateWords(), state, "unknown");
}

std::string InterfaceOf(int32_t tethering_mode) {
  return Find(InterfaceWords(), tethering_mode, "other");
}

std::string WordOfPassthrough(int32_t state) {
  static const Words<int32_t> words = {{"off", 0}, {"waiting for a call", 1}, {"active", 2}};
  return Find(words, state, "unknown");
}

}  // namespace qcmapctl
