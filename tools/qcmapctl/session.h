/// The tool's connection to the server, and why a request failed on it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "failure.h"
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

namespace qcmapctl {

using mox::vendor::qcom::qcmap::QcmapWrapper;
using WwanPolicy = mox::wwan::DataManager::WwanPolicy;

/// Connects when a command first needs the server, so that help and usage errors need none. The
/// library tells no error codes; this class works out what failed. All members may throw
/// CommandFailed.
class Session {
 public:
  /// The library's object, connected.
  QcmapWrapper& Wrapper();

  /// All policies; a profile's index is its place.
  std::vector<WwanPolicy> Policies();

  /// The policy of a profile that must exist.
  WwanPolicy Policy(uint32_t index);

  /// Ends the command unless the server granted the request: with what is wrong with the server,
  /// else with `refusal` of `subject`.
  void Require(bool granted, Failure refusal, const std::string& subject = {});

  /// Ends the command when the server is gone or does not answer. After a refusal it returns.
  void RequireServer();

 private:
  QcmapWrapper* wrapper_ = nullptr;
};

/// How a profile is called in messages.
std::string ProfileName(uint32_t index);

}  // namespace qcmapctl
