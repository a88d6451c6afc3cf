/// lan: the gateway address of the LAN and its DHCP server.
#include <arpa/inet.h>

#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

struct LanArguments {
  std::optional<std::string> gateway;
  std::optional<std::string> netmask;
  std::optional<bool> dhcp;
  std::optional<std::string> start;
  std::optional<std::string> end;
  std::optional<uint32_t> lease;
};

Report SetLan(Router& router, const LanArguments& arguments) {
  if (!arguments.gateway && !arguments.netmask && !arguments.dhcp && !arguments.start &&
      !arguments.lease) {
    throw CommandFailed("no setting is given", "for example: qcmapctl lan set --dhcp off");
  }
  const LanConfig present = router.Lan();
  // The last range does not fit another subnet, and there is none after a time without DHCP. If the
  // range is empty, the library derives one.
  const bool keep_range = !arguments.gateway && !arguments.netmask && present.dhcp;
  const std::string start = arguments.start.value_or(keep_range ? present.start : "");
  const std::string end = arguments.end.value_or(keep_range ? present.end : "");
  router.Require(
      router.Wrapper().SetLanConfig(arguments.gateway.value_or(present.gateway),
                                    arguments.netmask.value_or(present.netmask),
                                    arguments.dhcp.value_or(present.dhcp), start, end,
                                    arguments.lease.value_or(static_cast<uint32_t>(present.lease))),
      Failure::LAN_REFUSED);
  return {DataOf(router.Lan()), [](const Json& data) {
            return AsBlock()(data) + "set; 'qcmapctl lan activate' makes it take effect\n";
          }};
}

Report ActivateLan(Router& router) {
  router.Require(router.Wrapper().ActivateLan(), Failure::REFUSED);
  return {{{"result", "activated"}}, AsSentence("LAN {result}")};
}

CLI::Option* AddIpv4Address(CLI::App* verb, const std::string& name,
                            std::optional<std::string>& address, const std::string& description) {
  return AddArgument(verb, name, "ADDRESS", description, [&address](const std::string& word) {
    address = word;
    in_addr parsed;
    return ::inet_pton(AF_INET, word.c_str(), &parsed) == 1
               ? std::string()
               : "'" + word + "' is not an IPv4 address";
  });
}

}  // namespace

void AddLan(CommandLine& line) {
  const auto arguments = std::make_shared<LanArguments>();
  CLI::App* lan = line.AddObject("lan", "The gateway address of the LAN and its DHCP server");
  line.AddVerb(lan, "show", "Show the LAN configuration", [](Context& context) {
    return Report{DataOf(context.router.Lan()), AsBlock()};
  });
  CLI::App* set = line.AddVerb(
      lan, "set",
      "Change the given settings; a new subnet gets a range that fits unless one is given",
      [arguments](Context& context) { return SetLan(context.router, *arguments); });
  AddIpv4Address(set, "--gateway", arguments->gateway, "The router's own address on the LAN");
  AddIpv4Address(set, "--netmask", arguments->netmask, "The netmask of the LAN");
  AddWord(set, "--dhcp", arguments->dhcp, SwitchWords(),
          "Whether hosts get their addresses by DHCP");
  CLI::Option* start =
      AddIpv4Address(set, "--start", arguments->start, "First address for hosts; requires --end");
  CLI::Option* end =
      AddIpv4Address(set, "--end", arguments->end, "Last address for hosts; requires --start");
  start->needs(end);
  end->needs(start);
  AddNumber(set, "--lease", arguments->lease, 0, 2147483647, "Lease time in seconds");
  line.AddVerb(lan, "activate", "Make the LAN configuration take effect",
               [](Context& context) { return ActivateLan(context.router); });
}

}  // namespace qcmapctl
