/// Reads records from the JSON that Printer has made of them.
#pragma once

#include <arpa/inet.h>

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "records/printer.h"
#include "records/table.h"

namespace seam {

/// Expects the members in the order in which they were printed, without spaces. After the first
/// thing that is not as expected, it reads nothing more.
class Reader {
 public:
  explicit Reader(std::string_view text) : left_(text) {}

  explicit operator bool() const { return good_; }

  bool StartsWith(std::string_view text) const { return left_.substr(0, text.size()) == text; }
  /// Skips `text`.
  void Expect(std::string_view text) {
    good_ = good_ && StartsWith(text);
    Skip(text.size());
  }

  /// Reads the value of the member `name`, which a comma may precede.
  template <typename Value>
  void Member(const char* name, Value&& value) {
    if (StartsWith(",")) Expect(",");
    Expect('"' + std::string(name) + "\":");
    Read(value);
  }

  template <typename Names, typename... Values>
  void Members(const Names& names, std::tuple<Values...> values) {
    size_t i = 0;
    std::apply([&](auto&&... value) { (Member(names[i++], value), ...); }, values);
  }

  template <typename Value>
  void Read(Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      value = StartsWith("true");
      Expect(value ? "true" : "false");
    } else if constexpr (std::is_enum_v<Value>) {
      value = static_cast<Value>(ReadEnumerator<Value>());
    } else if constexpr (std::is_integral_v<Value>) {
      const auto [end, error] = std::from_chars(left_.data(), left_.data() + left_.size(), value);
      good_ = good_ && error == std::errc();
      Skip(static_cast<size_t>(end - left_.data()));
    } else {
      Expect("{");
      std::apply([&](const auto&... field) { (Member(field.name, field.in(value)), ...); },
                 kFields<Value>);
      Expect("}");
    }
  }
  template <typename Entry, size_t kCount>
  void Read(Entry (&entries)[kCount]) {
    Entries<Entry> all{entries, kCount, kCount};
    Read(all);
  }
  template <size_t kCapacity>
  void Read(char (&text)[kCapacity]) {
    ReadText(text, kCapacity);
  }
  void Read(HostName<char>& name) { ReadText(name.text, name.capacity); }
  void Read(std::string& text) {
    text.clear();
    Expect("\"");
    while (good_ && !StartsWith("\"")) text += ReadCharacter();
    Expect("\"");
  }
  /// The entries end where the text says so. The list's count is a member of its own.
  template <typename Entry>
  void Read(Entries<Entry>& entries) {
    Expect("[");
    for (size_t i = 0; good_ && !StartsWith("]"); ++i) {
      if (i > 0) Expect(",");
      good_ = good_ && i < entries.capacity;
      if (good_) Read(entries.first[i]);
    }
    Expect("]");
  }
  template <typename Enum, typename Number>
  void Read(Code<Enum, Number>& code) {
    code.number = static_cast<Number>(ReadEnumerator<Enum>());
  }
  void Read(Ipv4Address<uint32_t>& address) {
    std::string text;
    Read(text);
    in_addr bytes{};
    good_ = good_ && ::inet_pton(AF_INET, text.c_str(), &bytes) == 1;
    address.number = ntohl(bytes.s_addr);
  }
  void Read(qcmap_nw_params_t& params) {
    params = {};
    for (int i = 0; i < 3; ++i) {
      Expect(i == 0 ? "[" : ",");
      Reader ahead = *this;
      std::string text;
      ahead.Read(text);
      Ipv4Address<uint32_t> v4{params.v4[i]};
      if (text.find(':') == std::string::npos)
        Read(v4);
      else
        good_ = good_ && ::inet_pton(AF_INET6, text.c_str(), params.v6[i]) == 1;
      left_ = ahead.left_;
    }
    Expect("]");
  }
  /// The result refers to the text that is read, and keeps its escapes.
  void Read(std::string_view& text) {
    Expect("\"");
    const std::string_view all = left_;
    while (good_ && !StartsWith("\"")) Skip(StartsWith("\\") ? 2 : 1);
    text = all.substr(0, all.size() - left_.size());
    Expect("\"");
  }
  /// Reads an object.
  void Read(Json& json) {
    const std::string_view all = left_;
    int depth = 0;
    do {
      std::string_view text;
      depth += StartsWith("{") ? 1 : StartsWith("}") ? -1 : 0;
      if (StartsWith("\""))
        Read(text);
      else
        Skip(1);
    } while (good_ && depth > 0);
    json.text = all.substr(0, all.size() - left_.size());
  }

 private:
  template <typename Enum>
  int64_t ReadEnumerator() {
    if (!StartsWith("\"")) {
      int64_t number{};
      Read(number);
      return number;
    }
    std::string name;
    Read(name);
    for (const Enumerator& enumerator : kEnumerators<Enum>) {
      if (enumerator.name == name) return enumerator.value;
    }
    good_ = false;
    return {};
  }
  void ReadText(char* field, size_t capacity) {
    std::string text;
    Read(text);
    good_ = good_ && text.size() <= capacity;
    text.resize(capacity);
    if (good_) std::memcpy(field, text.data(), capacity);
  }
  char ReadCharacter() {
    unsigned byte = 0;
    if (StartsWith("\\u00")) {
      const std::string_view digits = left_.substr(4, 2);
      std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
      Skip(6);
      return static_cast<char>(byte);
    }
    if (StartsWith("\\")) Skip(1);
    const char character = left_.empty() ? '\0' : left_.front();
    Skip(1);
    return character;
  }
  void Skip(size_t count) {
    good_ = good_ && count <= left_.size();
    if (good_) left_.remove_prefix(count);
  }

  std::string_view left_;
  bool good_ = true;
};

}  // namespace seam
