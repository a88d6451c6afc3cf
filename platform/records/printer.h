/// Prints records as text, by the names of the table.
#pragma once

#include <arpa/inet.h>

#include <charconv>
#include <cstring>
#include <string>
#include <type_traits>

#include "records/table.h"

namespace seam {

/// Text that a printer has made before.
struct Json {
  std::string_view text;
};

/// Appends to a string. In JSON, `{"family":"V4","bytes":[1,2]}`; as plain text, for people,
/// `{family=V4,bytes=[1,2]}`. A value without an enumerator is printed as its number.
class Printer {
 public:
  enum Style { kJson, kPlain };
  enum Names { kShown, kMasked };

  explicit Printer(std::string& out, Style style = kJson, Names host_names = kShown)
      : out_(out), style_(style), host_names_(host_names) {}

  /// Appends a name and its value, after a comma unless they are the first within brackets.
  template <typename Value>
  void Member(const char* name, const Value& value) {
    Separate();
    PutName(name);
    Put(value);
  }

  /// Appends the values under these names, of which there may be more than values.
  template <typename Names, typename... Values>
  void Members(const Names& names, const std::tuple<Values...>& values) {
    size_t i = 0;
    std::apply([&](const auto&... value) { (Member(names[i++], value), ...); }, values);
  }

  /// Appends a name and an object, whose members `put_members` appends.
  template <typename PutMembers>
  void Object(const char* name, const PutMembers& put_members) {
    Separate();
    PutName(name);
    Open('{');
    put_members();
    out_ += '}';
  }

  template <typename Value>
  void Put(const Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      out_ += value ? "true" : "false";
    } else if constexpr (std::is_enum_v<Value>) {
      PutEnumerator(value, static_cast<int64_t>(value));
    } else if constexpr (std::is_same_v<Value, const char*>) {
      PutText(value);
    } else if constexpr (std::is_integral_v<Value>) {
      char digits[24];
      const char* const end = std::to_chars(digits, std::end(digits), +value).ptr;
      out_.append(digits, static_cast<size_t>(end - digits));
    } else {
      Open('{');
      std::apply([&](const auto&... field) { (Member(field.name, field.in(value)), ...); },
                 kFields<Value>);
      out_ += '}';
    }
  }
  template <typename Entry, size_t kCount>
  void Put(const Entry (&entries)[kCount]) {
    Put(Entries<const Entry>{entries, kCount, kCount});
  }
  /// A function for `const char*` would take precedence, and read past a field without terminator.
  template <size_t kCapacity>
  void Put(const char (&text)[kCapacity]) {
    PutText({text, ::strnlen(text, kCapacity)});
  }
  void Put(std::string_view text) { PutText(text); }
  void Put(const std::string& text) { PutText(text); }
  void Put(const Json& json) { out_ += json.text; }
  template <typename Entry>
  void Put(const Entries<Entry>& entries) {
    Open('[');
    for (size_t i = 0; i < entries.count; ++i) {
      Separate();
      Put(entries.first[i]);
    }
    out_ += ']';
  }
  template <typename Char>
  void Put(const HostName<Char>& name) {
    const size_t length = ::strnlen(name.text, name.capacity);
    PutText(host_names_ == kShown ? std::string(name.text, length) : std::string(length, 'x'));
  }
  template <typename Enum, typename Number>
  void Put(const Code<Enum, Number>& code) {
    PutEnumerator(static_cast<Enum>(code.number), code.number);
  }
  template <typename Number>
  void Put(const Ipv4Address<Number>& address) {
    PutQuote();
    for (int shift = 24; shift >= 0; shift -= 8) {
      if (shift != 24) out_ += '.';
      Put(address.number >> shift & 0xFF);
    }
    PutQuote();
  }
  /// The union does not say which family it holds. Three IPv6 addresses use more of it.
  void Put(const qcmap_nw_params_t& params) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&params);
    const auto is_set = [](unsigned char byte) { return byte != 0; };
    const bool is_v6 = std::any_of(bytes + sizeof params.v4, bytes + sizeof params, is_set);
    Open('[');
    for (int i = 0; i < 3; ++i) {
      Separate();
      if (is_v6)
        PutIpv6Address(params.v6[i]);
      else
        Put(Ipv4Address{params.v4[i]});
    }
    out_ += ']';
  }

 private:
  void Open(char bracket) { out_ += bracket; }
  void Separate() {
    if (!out_.empty() && out_.back() != '{' && out_.back() != '[') out_ += ',';
  }
  void PutName(const char* name) {
    PutWord(name);
    out_ += style_ == kJson ? ':' : '=';
  }
  /// A word needs quotes only in JSON.
  void PutQuote() {
    if (style_ == kJson) out_ += '"';
  }
  void PutWord(const char* word) {
    PutQuote();
    out_ += word;
    PutQuote();
  }
  template <typename Enum>
  void PutEnumerator(Enum value, int64_t number) {
    const char* const name = NameOf(value);
    if (name != nullptr)
      PutWord(name);
    else
      Put(number);
  }
  void PutIpv6Address(const uint8_t (&bytes)[16]) {
    char text[INET6_ADDRSTRLEN] = "";
    ::inet_ntop(AF_INET6, bytes, text, sizeof text);
    PutWord(text);
  }
  /// Each byte outside ASCII is a character of its own, since nobody knows its encoding.
  void PutText(std::string_view text) {
    out_ += '"';
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x20 || byte >= 0x7F) {
        constexpr char kDigits[] = "0123456789abcdef";
        out_ += "\\u00";
        out_ += kDigits[byte >> 4];
        out_ += kDigits[byte & 15];
      } else {
        if (c == '"' || c == '\\') out_ += '\\';
        out_ += c;
      }
    }
    out_ += '"';
  }

  std::string& out_;
  const Style style_;
  const Names host_names_;
};

}  // namespace seam
