/// The words by which the tool names families, technologies, states and interfaces.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mox/util/ip_family.h"
#include "mox/wwan/data_manager.h"
#include "mox/wwan/tech.h"

namespace qcmapctl {

using ConnectStatus = mox::wwan::DataManager::ConnectStatus;
using mox::util::IPFamily;
using mox::wwan::Tech;

/// Words with what they stand for. If several words stand for the same, output uses the first one.
template <typename Value>
using Words = std::vector<std::pair<std::string, Value>>;

/// The words that the command line accepts, in the order in which the help lists them.
const Words<IPFamily>& FamilyWords();
const Words<Tech>& TechWords();
const Words<ConnectStatus>& StateWords();
const Words<bool>& SwitchWords();
/// The names and numbers of the tethering interfaces.
const Words<int32_t>& InterfaceWords();

std::string WordOf(IPFamily family);
std::string WordOf(Tech tech);
std::string WordOf(ConnectStatus state);
/// "other" for a mode that stands for any other interface.
std::string InterfaceOf(int32_t tethering_mode);
/// What the server's state byte of IP passthrough means.
std::string WordOfPassthrough(int32_t state);

}  // namespace qcmapctl
