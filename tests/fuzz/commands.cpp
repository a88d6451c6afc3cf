/// Any lines on the console of a server whose clients have set any names.
#include <cstring>
#include <sstream>

#include "fuzz.h"
#include "modem_in_memory.h"

namespace {

/// Sets names as two requests may: any bytes, with a zero byte in each field.
void SetNames(sim::Lan& lan, const std::string& name) {
  lan.vlans.push_back({"", 2, {}});
  std::strncpy(lan.vlans[0].iface_name, name.c_str(), sizeof lan.vlans[0].iface_name - 1);
  auto& host = lan.passthrough.config.device_name;
  std::strncpy(host, name.c_str(), sizeof host - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
  std::string line;
  ModemInMemory server(1);
  std::getline(text, line);
  SetNames(server.model.lan, line);
  std::string shown = server.commands.Run("show").output;
  while (std::getline(text, line)) {
    const sim::CommandResult result = server.commands.Run(line);
    if (result.quits) break;
    if (result.error.empty()) {
      server.Proceed();
      shown = server.commands.Run("show").output;
    } else {
      Require(result.output.empty() && !result.pause, "a refused line does nothing");
      Require(server.commands.Run("show").output == shown, "a refused line changes nothing");
    }
  }
  return 0;
}
