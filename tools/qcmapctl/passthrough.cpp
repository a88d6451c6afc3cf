/// passthrough: IP passthrough, which hands the WWAN address to a USB host.
#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

using mox::wwan::MobileapManager;

Report ShowPassthrough(Router& router) {
  return {ReadPassthrough(router), AsBlock()};
}

Report EnablePassthrough(Router& router, const std::string& host) {
  Passthrough config;
  config.device_type = MobileapManager::DeviceType::USB_HOST;
  config.host_device_name = host;
  router.Require(router.Wrapper().SetIpPassthrough(true, config), Failure::PASSTHROUGH_REFUSED,
                 "host '" + Printable(host) + "'");
  return ShowPassthrough(router);
}

Report DisablePassthrough(Router& router) {
  Passthrough config;
  router.Require(router.Wrapper().SetIpPassthrough(false, config), Failure::REFUSED);
  return ShowPassthrough(router);
}

}  // namespace

void AddPassthrough(CommandLine& line) {
  const auto host = std::make_shared<std::string>();
  CLI::App* passthrough =
      line.AddObject("passthrough", "IP passthrough: a USB host gets the WWAN address");
  line.AddVerb(passthrough, "show", "Show whether passthrough is enabled, and for which host",
               [](Context& context) { return ShowPassthrough(context.router); });
  CLI::App* enable =
      line.AddVerb(passthrough, "enable", "Enable passthrough for a host",
                   [host](Context& context) { return EnablePassthrough(context.router, *host); });
  AddText(enable, "NAME", *host, "the USB host's name, at most 100 bytes", 100)->required();
  line.AddVerb(passthrough, "disable", "Disable passthrough",
               [](Context& context) { return DisablePassthrough(context.router); });
}

}  // namespace qcmapctl
