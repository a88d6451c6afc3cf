/// Data as shell variables and as single fields.
#include "fields.h"

#include <algorithm>
#include <utility>

namespace qcmapctl {
namespace {

/// Each value with its name, which is made of the keys that lead to it.
using Values = std::vector<std::pair<std::string, Json>>;

void AddValues(const Json& data, const std::string& name, Values& values) {
  if (!name.empty() && (!data.is_structured() || data.empty())) {
    values.emplace_back(name, data.is_structured() ? Json() : data);
    return;
  }
  for (const auto& item : data.items()) {
    // No variable's name starts with a digit.
    const bool is_name = name.empty() && !data.is_array();
    AddValues(item.value(), is_name ? item.key() : name + "_" + item.key(), values);
  }
}

Values ValuesOf(const Json& data) {
  Values values;
  AddValues(data, "", values);
  return values;
}

std::string Plain(const Json& value) {
  if (value.is_null()) return "";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string Quoted(const Json& value) {
  if (value.is_number() || value.is_boolean()) return value.dump();
  std::string quoted;
  for (char c : Plain(value)) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return "'" + quoted + "'";
}

/// The value of that name, or the values of a list of that name; empty if there is neither.
std::string Find(const Values& values, const std::string& name) {
  std::string found;
  for (const auto& [known, value] : values) {
    if (known == name) return Plain(value);
    const std::string position = known.substr(std::min(known.size(), name.size() + 1));
    const bool listed = known.compare(0, name.size() + 1, name + "_") == 0 &&
                        position.find_first_not_of("0123456789") == std::string::npos;
    if (listed) found += (found.empty() ? "" : " ") + Plain(value);
  }
  return found;
}

}  // namespace

std::string KeyValues(const Json& data, char separator) {
  std::string text;
  for (const auto& [name, value] : ValuesOf(data)) text += name + "=" + Quoted(value) + separator;
  if (!text.empty()) text.back() = '\n';
  return text;
}

std::string Fields(const Json& data, const std::vector<std::string>& names) {
  std::string text;
  for (const Json& object : data.is_array() ? data : Json::array({data})) {
    const Values values = ValuesOf(object);
    std::string line;
    for (const std::string& name : names) line += "\t" + Find(values, name);
    text += line.substr(1) + "\n";
  }
  return text;
}

}  // namespace qcmapctl
