/// What several commands show of the router, as data.
#pragma once

#include <functional>
#include <optional>

#include "report.h"
#include "router.h"

namespace qcmapctl {

/// What `read` makes of each profile, as an array; of one profile, as an object, if there is an
/// index.
Json OfProfiles(Router& router, const std::optional<uint32_t>& index,
                const std::function<Json(const Profile&)>& read);

Json DataOf(const Profile& profile);
Json DataOf(const LanConfig& lan);
/// Null while a call has no addresses.
Json DataOf(const std::vector<std::string>& addresses);
/// All VLANs with the profiles that they are mapped to.
Json ReadVlans(Router& router);
Json ReadPassthrough(Router& router);

}  // namespace qcmapctl
