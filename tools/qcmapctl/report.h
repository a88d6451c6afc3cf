/// The result of a command: data, from which every form of output follows.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace qcmapctl {

using Json = nlohmann::ordered_json;

/// Makes text from the data of a report. The text ends with a newline unless it is empty.
using Describe = std::function<std::string(const Json&)>;

struct Report {
  Json data;
  Describe describe;
  int exit_code = 0;
};

/// `value` as text, with the unit that belongs to `key`.
std::string TextOf(const std::string& key, const Json& value);

/// An array of objects as a table whose heads are the keys, or `if_empty` on a line of its own.
Describe AsTable(const std::string& if_empty);
/// An object as one line for each key.
Describe AsBlock();
/// The object, or each object of an array, as `pattern`. In it, {PATH} stands for a value, and a
/// part in brackets is left out if its value is missing or null.
Describe AsSentence(const std::string& pattern);

/// `text` with every line indented.
std::string Indent(const std::string& text);

}  // namespace qcmapctl
