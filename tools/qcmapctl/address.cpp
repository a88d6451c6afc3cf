/// address: the addresses of a profile's call.
#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

struct AddressArguments {
  std::optional<uint32_t> index;
  Families families;
};

Report ShowAddresses(Router& router, const AddressArguments& arguments) {
  std::string pattern = "profile {index}";
  for (const IPFamily family : arguments.families.Chosen()) {
    pattern += "\n  " + WordOf(family) + "  {" + WordOf(family) + "}";
  }
  return {OfProfiles(router, arguments.index,
                     [&](const Profile& profile) {
                       Json json = {{"index", profile.index}};
                       for (const IPFamily family : arguments.families.Chosen()) {
                         json[WordOf(family)] = DataOf(router.Addresses(profile.index, family));
                       }
                       return json;
                     }),
          AsSentence(pattern)};
}

}  // namespace

void AddAddress(CommandLine& line) {
  const auto arguments = std::make_shared<AddressArguments>();
  CLI::App* address = line.AddObject("address", "Addresses of a profile's call");
  CLI::App* show = line.AddVerb(
      address, "show", "Show the addresses of one profile, or of all",
      [arguments](Context& context) { return ShowAddresses(context.router, *arguments); });
  AddIndex(show, arguments->index);
  AddFamilies(show, arguments->families);
}

}  // namespace qcmapctl
