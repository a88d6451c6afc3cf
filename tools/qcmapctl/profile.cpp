/// What the objects that act on profiles share: choosing them, and showing one or all.
#include "commands.h"

namespace qcmapctl {

std::vector<Profile> ChosenProfiles(Session& session, const std::optional<uint32_t>& index) {
  if (index) return {{*index, session.Policy(*index)}};
  std::vector<Profile> profiles;
  for (const WwanPolicy& policy : session.Policies()) {
    profiles.push_back({static_cast<uint32_t>(profiles.size()), policy});
  }
  return profiles;
}

Json OneOrAll(Json list, const std::optional<uint32_t>& index) {
  return index ? list.at(0) : list;
}

}  // namespace qcmapctl
