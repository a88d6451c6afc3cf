/// passthrough: IP passthrough, which hands the WWAN address to a USB host.
#include "passthrough.h"

#include <string>

namespace qcmapctl {
namespace {

using mox::wwan::MobileapManager;
using IpPassthroughConfig = MobileapManager::IpPassthroughConfig;

Report Enable(Router& router, const std::string& host) {
  IpPassthroughConfig config;
  config.device_type = MobileapManager::DeviceType::USB_HOST;
  config.host_device_name = host;
  router.Require(router.Wrapper().SetIpPassthrough(true, config), Failure::PASSTHROUGH_REFUSED,
                 "host '" + Printable(host) + "'");
  return ShowPassthrough(router);
}

Report Disable(Router& router) {
  IpPassthroughConfig config;
  router.Require(router.Wrapper().SetIpPassthrough(false, config), Failure::REFUSED);
  return ShowPassthrough(router);
}

}  // namespace

Report ShowPassthrough(Router& router) {
  bool enabled = false;
  IpPassthroughConfig config;
  router.Require(router.Wrapper().GetIpPassthrough(enabled, config), Failure::REFUSED);
  const bool has_host = config.device_type == MobileapManager::DeviceType::USB_HOST;
  Report report;
  report.text = std::string(enabled ? "enabled" : "disabled") +
                (has_host ? " for USB host '" + Printable(config.host_device_name) + "'" : "") +
                ", state " + std::to_string(config.pt_state) + "\n";
  report.json["enabled"] = enabled;
  report.json["host"] = has_host ? Json(config.host_device_name) : Json(nullptr);
  report.json["state"] = config.pt_state;
  return report;
}

void AddPassthrough(CommandLine& line) {
  const auto host = std::make_shared<std::string>();
  CLI::App* passthrough =
      line.AddObject("passthrough", "IP passthrough: a USB host gets the WWAN address");
  line.AddVerb(passthrough, "show", "Show whether passthrough is enabled, and for which host",
               [](Context& context) { return ShowPassthrough(context.router); });
  CLI::App* enable =
      line.AddVerb(passthrough, "enable", "Enable passthrough for a host",
                   [host](Context& context) { return Enable(context.router, *host); });
  enable->add_option("NAME", *host, "the USB host's name, at most 100 bytes")
      ->option_text(" ")
      ->required()
      ->check([](const std::string& name) {
        return !name.empty() && name.size() <= 100 ? ""
                                                   : "the host's name must have 1 to 100 bytes";
      });
  line.AddVerb(passthrough, "disable", "Disable passthrough",
               [](Context& context) { return Disable(context.router); });
}

}  // namespace qcmapctl
