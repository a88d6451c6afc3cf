/// address: the addresses of a profile's call.
#include "address.h"

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"

namespace qcmapctl {
namespace {

struct AddressArguments {
  std::optional<uint32_t> index;
  Families families;
};

Report Show(Router& router, const AddressArguments& arguments) {
  Report report{"", Json::array()};
  Table table({"PROFILE", "FAMILY", "ADDRESS-1", "ADDRESS-2", "ADDRESS-3"});
  for (const Profile& profile : router.Profiles(arguments.index)) {
    Json json;
    json["index"] = profile.index;
    for (const IPFamily family : arguments.families.Chosen()) {
      const std::vector<std::string> addresses = router.Addresses(profile.index, family);
      json[WordOf(family)] = addresses.empty() ? Json(nullptr) : Json(addresses);
      std::vector<std::string> row = {std::to_string(profile.index), WordOf(family)};
      row.insert(row.end(), addresses.begin(), addresses.end());
      if (addresses.empty()) row.push_back("none");
      table.AddRow(row);
    }
    report.json.push_back(json);
  }
  report.text = table.Render();
  report.json = OneOrAll(std::move(report.json), arguments.index.has_value());
  return report;
}

}  // namespace

void AddAddress(CommandLine& line) {
  const auto arguments = std::make_shared<AddressArguments>();
  CLI::App* address = line.AddObject("address", "Addresses of a profile's call");
  CLI::App* show =
      line.AddVerb(address, "show", "Show the addresses of one profile, or of all",
                   [arguments](Context& context) { return Show(context.router, *arguments); });
  AddIndex(show, arguments->index);
  AddFamilies(show, arguments->families);
}

}  // namespace qcmapctl
