/// lan: the gateway address of the LAN and its DHCP server.
#include "lan.h"

#include <arpa/inet.h>

#include <optional>
#include <string>

#include "arguments.h"

namespace qcmapctl {
namespace {

struct LanConfig {
  std::string gateway;
  std::string netmask;
  bool dhcp = false;
  std::string start;
  std::string end;
  int lease = 0;
};

struct LanArguments {
  std::optional<std::string> gateway;
  std::optional<std::string> netmask;
  std::optional<bool> dhcp;
  std::optional<std::string> start;
  std::optional<std::string> end;
  std::optional<uint32_t> lease;
};

LanConfig Read(Router& router) {
  LanConfig lan;
  router.Require(router.Wrapper().GetLanConfig(lan.gateway, lan.netmask, lan.dhcp, lan.start,
                                               lan.end, lan.lease),
                 Failure::REFUSED);
  return lan;
}

Report Describe(const LanConfig& lan) {
  Report report;
  Table table;
  table.AddRow({"gateway", lan.gateway});
  table.AddRow({"netmask", lan.netmask});
  table.AddRow({"dhcp", lan.dhcp ? "on" : "off"});
  table.AddRow({"range", lan.start + " to " + lan.end});
  table.AddRow({"lease", std::to_string(lan.lease)});
  report.text = table.Render();
  report.json["gateway"] = lan.gateway;
  report.json["netmask"] = lan.netmask;
  report.json["dhcp"] = lan.dhcp;
  report.json["start"] = lan.start;
  report.json["end"] = lan.end;
  report.json["lease"] = lan.lease;
  return report;
}

Report Set(Router& router, const LanArguments& arguments) {
  if (!arguments.gateway && !arguments.netmask && !arguments.dhcp && !arguments.start &&
      !arguments.lease) {
    throw CommandFailed("no setting is given", "for example: qcmapctl lan set --dhcp off");
  }
  const LanConfig present = Read(router);
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
  Report report = Describe(Read(router));
  report.text += "set; 'qcmapctl lan activate' makes it take effect\n";
  return report;
}

Report Activate(Router& router) {
  router.Require(router.Wrapper().ActivateLan(), Failure::REFUSED);
  Report report = {"LAN activated\n", {}};
  report.json["result"] = "activated";
  return report;
}

CLI::Option* AddIpv4Address(CLI::App* verb, const std::string& name,
                            std::optional<std::string>& address, const std::string& description) {
  return verb->add_option(name, address, description)
      ->option_text("ADDRESS")
      ->check([](const std::string& text) {
        in_addr parsed;
        return ::inet_pton(AF_INET, text.c_str(), &parsed) == 1
                   ? ""
                   : "'" + text + "' is not an IPv4 address";
      });
}

}  // namespace

Report ShowLan(Router& router) {
  return Describe(Read(router));
}

void AddLan(CommandLine& line) {
  const auto arguments = std::make_shared<LanArguments>();
  CLI::App* lan = line.AddObject("lan", "The gateway address of the LAN and its DHCP server");
  line.AddVerb(lan, "show", "Show the LAN configuration",
               [](Context& context) { return ShowLan(context.router); });
  CLI::App* set = line.AddVerb(
      lan, "set",
      "Change the given settings; a new subnet gets a range that fits unless one is given",
      [arguments](Context& context) { return Set(context.router, *arguments); });
  AddIpv4Address(set, "--gateway", arguments->gateway, "The router's own address on the LAN");
  AddIpv4Address(set, "--netmask", arguments->netmask, "The netmask of the LAN");
  AddOnOff(set, "--dhcp", arguments->dhcp, "Whether hosts get their addresses by DHCP");
  CLI::Option* start =
      AddIpv4Address(set, "--start", arguments->start, "First address for hosts; requires --end");
  CLI::Option* end =
      AddIpv4Address(set, "--end", arguments->end, "Last address for hosts; requires --start");
  start->needs(end);
  end->needs(start);
  AddNumber(set, "--lease", arguments->lease, 0, 2147483647, "Lease time, in the server's unit");
  line.AddVerb(lan, "activate", "Make the LAN configuration take effect",
               [](Context& context) { return Activate(context.router); });
}

}  // namespace qcmapctl
