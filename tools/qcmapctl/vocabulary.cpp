/// The words by which the tool names families, technologies, states and interfaces.
#include "vocabulary.h"

namespace qcmapctl {

const std::map<std::string, IPFamily>& FamilyWords() {
  static const std::map<std::string, IPFamily> words = {
      {"ipv4", IPFamily::IPV4}, {"ipv6", IPFamily::IPV6}, {"ipv4v6", IPFamily::IPV4V6}};
  return words;
}

const std::map<std::string, Tech>& TechWords() {
  static const std::map<std::string, Tech> words = {
      {"3gpp", Tech::TECH_3GPP}, {"3gpp2", Tech::TECH_3GPP2}, {"any", Tech::ANY}};
  return words;
}

const std::map<std::string, ConnectStatus>& StateWords() {
  static const std::map<std::string, ConnectStatus> words = {
      {"up", ConnectStatus::CONNECTED},
      {"down", ConnectStatus::DISCONNECTED},
      {"connected", ConnectStatus::CONNECTED},
      {"connecting", ConnectStatus::CONNECTING},
      {"disconnected", ConnectStatus::DISCONNECTED},
      {"disconnecting", ConnectStatus::DISCONNECTING},
      {"unknown", ConnectStatus::UNKNOWN}};
  return words;
}

const std::map<std::string, int32_t>& InterfaceWords() {
  static const std::map<std::string, int32_t> words = {{"rndis0", 1}, {"ecm0", 2}, {"eth0", 3},
                                                       {"1", 1},      {"2", 2},    {"3", 3}};
  return words;
}

const char* WordOf(IPFamily family) {
  switch (family) {
    case IPFamily::IPV4:
      return "ipv4";
    case IPFamily::IPV6:
      return "ipv6";
    case IPFamily::IPV4V6:
      return "ipv4v6";
    case IPFamily::NONE:
      break;
  }
  return "none";
}

const char* WordOf(Tech tech) {
  switch (tech) {
    case Tech::TECH_3GPP:
      return "3gpp";
    case Tech::TECH_3GPP2:
      return "3gpp2";
    case Tech::ANY:
      break;
  }
  return "any";
}

const char* WordOf(ConnectStatus state) {
  switch (state) {
    case ConnectStatus::CONNECTING:
      return "connecting";
    case ConnectStatus::CONNECTED:
      return "connected";
    case ConnectStatus::DISCONNECTING:
      return "disconnecting";
    case ConnectStatus::DISCONNECTED:
      return "disconnected";
    case ConnectStatus::UNKNOWN:
      break;
  }
  return "unknown";
}

const char* InterfaceOf(int32_t tethering_mode) {
  switch (tethering_mode) {
    case 1:
      return "rndis0";
    case 2:
      return "ecm0";
    case 3:
      return "eth0";
    default:
      return nullptr;
  }
}

}  // namespace qcmapctl
