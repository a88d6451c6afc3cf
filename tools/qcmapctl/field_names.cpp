/// Finds the names of fields in the schema of the documents.
#include "field_names.h"

#include <algorithm>

#include "arguments.h"
#include "built_in.h"
#include "failure.h"
#include "report.h"
#include "words/nearest_word.h"

namespace qcmapctl {
namespace {

const Json& Definitions() {
  static const Json schema = Json::parse(kSchema);
  return schema.at("$defs");
}

/// Adds the names of the values that `schema` allows. `name` is made of the keys that lead to it.
void AddNames(const Json& schema, const std::string& name, std::vector<std::string>& names) {
  if (schema.contains("$ref")) {
    const auto reference = schema.at("$ref").get<std::string>();
    AddNames(Definitions().at(reference.substr(reference.rfind('/') + 1)), name, names);
  } else if (schema.contains("oneOf")) {
    for (const Json& one : schema.at("oneOf")) AddNames(one, name, names);
  } else if (schema.contains("items")) {
    AddNames(schema.at("items"), name.empty() ? "" : name + "_N", names);
  } else if (schema.contains("properties")) {
    for (const auto& item : schema.at("properties").items()) {
      AddNames(item.value(), name.empty() ? item.key() : name + "_" + item.key(), names);
    }
  } else if (schema.value("type", "") != "null" &&
             std::find(names.begin(), names.end(), name) == names.end()) {
    names.push_back(name);
  }
}

/// Whether `pattern` stands for `name`. An N in it is a position in a list.
bool StandsFor(const std::string& pattern, const std::string& name) {
  const std::vector<std::string> wanted = CLI::detail::split(pattern, '_');
  const std::vector<std::string> given = CLI::detail::split(name, '_');
  return std::equal(wanted.begin(), wanted.end(), given.begin(), given.end(),
                    [](const std::string& want, const std::string& have) {
                      return want == have || (want == "N" && IsNumber(have));
                    });
}

}  // namespace

std::vector<std::string> FieldNamesOf(std::string command) {
  std::replace(command.begin(), command.end(), ' ', '_');
  std::vector<std::string> names;
  // Some commands print lines instead of a document, or either.
  for (const std::string& document : {command, command + "_line"}) {
    if (Definitions().contains(document)) AddNames(Definitions().at(document), "", names);
  }
  return names;
}

void RequireField(const std::string& command, const std::string& name) {
  const std::vector<std::string> names = FieldNamesOf(command);
  for (const std::string& pattern : names) {
    if (StandsFor(pattern, name) || StandsFor(pattern, name + "_0")) {
      return;
    }
  }
  const std::string nearest = words::NearestWord(name, names);
  throw CommandFailed("unknown field '" + name + "'",
                      (nearest.empty() ? "" : "did you mean '" + nearest + "'? ") + "'qcmapctl " +
                          command + " --help' lists the fields");
}

}  // namespace qcmapctl
