/// Makes text from data.
#include "report.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "terminal.h"
#include "vocabulary.h"

namespace qcmapctl {
namespace {

using Row = std::vector<std::string>;

std::string RenderRows(const std::vector<Row>& rows) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], ColumnsOf(row[i]));
  }
  std::string text;
  for (const Row& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - ColumnsOf(row[i]) + 2, ' ');
    }
    text += line.erase(line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

std::string HeadOf(std::string key) {
  // Its cells speak for themselves.
  if (key == "half_up") return "";
  std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) {
    return c == '_' ? '-' : static_cast<char>(std::toupper(c));
  });
  return key;
}

/// The value at `path`, whose keys are joined by dots; null if there is none.
Json ValueAt(const Json& data, std::string path) {
  std::replace(path.begin(), path.end(), '.', '/');
  return data.value(Json::json_pointer("/" + path), Json());
}

std::string Fill(const std::string& pattern, const Json& data) {
  std::string text;
  size_t part = std::string::npos;
  bool is_missing = false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '[') {
      part = text.size();
      is_missing = false;
    } else if (pattern[i] == ']') {
      if (is_missing) text.erase(part);
    } else if (pattern[i] == '{') {
      const size_t end = pattern.find('}', i);
      const std::string path = pattern.substr(i + 1, end - i - 1);
      const Json value = ValueAt(data, path);
      const std::string shown = TextOf(path.substr(path.rfind('.') + 1), value);
      is_missing = is_missing || value.is_null() || shown.empty();
      text += shown;
      i = end;
    } else {
      text += pattern[i];
    }
  }
  // A list ends without its last comma.
  if (!text.empty() && text.back() == ',') text.pop_back();
  return text + "\n";
}

}  // namespace

std::string TextOf(const std::string& key, const Json& value) {
  if (value.is_null()) return "none";
  if (value.is_array()) {
    std::string words;
    for (const Json& element : value) words += (words.empty() ? "" : " ") + TextOf(key, element);
    return words.empty() ? "none" : words;
  }
  if (key == "half_up") return value.get<bool>() ? Colourful("HALF UP") : "";
  if (value.is_boolean()) return value.get<bool>() ? "on" : "off";
  if (value.is_string()) return Colourful(Printable(value.get<std::string>()));
  if (key == "lease") return value.dump() + " s";
  if (key == "state") return WordOfPassthrough(value.get<int32_t>());
  return value.dump();
}

Describe AsTable(const std::string& if_empty) {
  return [if_empty](const Json& data) {
    const Json list = data.is_array() ? data : Json::array({data});
    if (list.empty()) return if_empty + "\n";
    std::vector<Row> rows(1);
    for (const auto& item : list.front().items()) rows[0].push_back(HeadOf(item.key()));
    for (const Json& object : list) {
      Row row;
      for (const auto& item : object.items()) row.push_back(TextOf(item.key(), item.value()));
      rows.push_back(std::move(row));
    }
    return RenderRows(rows);
  };
}

Describe AsBlock() {
  return [](const Json& data) {
    std::vector<Row> rows;
    for (const auto& item : data.items()) {
      rows.push_back({item.key(), TextOf(item.key(), item.value())});
    }
    return RenderRows(rows);
  };
}

Describe AsSentence(const std::string& pattern) {
  return [pattern](const Json& data) {
    std::string text;
    for (const Json& object : data.is_array() ? data : Json::array({data})) {
      text += Fill(pattern, object);
    }
    return text;
  };
}

std::string Indent(const std::string& text) {
  std::string indented;
  bool at_start = true;
  for (char c : text) {
    if (at_start && c != '\n') indented += "  ";
    indented += c;
    at_start = c == '\n';
  }
  return indented;
}

}  // namespace qcmapctl
