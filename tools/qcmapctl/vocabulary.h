/// The words by which the tool names families, technologies, states and interfaces.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "mox/util/ip_family.h"
#include "mox/wwan/data_manager.h"
#include "mox/wwan/tech.h"

namespace qcmapctl {

using ConnectStatus = mox::wwan::DataManager::ConnectStatus;
using mox::util::IPFamily;
using mox::wwan::Tech;

/// The words that the command line accepts, in the order in which the help lists them.
const std::map<std::string, IPFamily>& FamilyWords();
const std::map<std::string, Tech>& TechWords();
/// Includes "up" and "down".
const std::map<std::string, ConnectStatus>& StateWords();
/// The names and numbers of the tethering interfaces.
const std::map<std::string, int32_t>& InterfaceWords();

const char* WordOf(IPFamily family);
const char* WordOf(Tech tech);
const char* WordOf(ConnectStatus state);
/// Null for a mode that stands for any other interface.
const char* InterfaceOf(int32_t tethering_mode);

}  // namespace qcmapctl
