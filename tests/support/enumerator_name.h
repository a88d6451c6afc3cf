/// Names of enumerators, for the messages of tests.
#pragma once

#include <string>
#include <utility>

/// How the compiler spells `kValue`: an enumerator's name, or a cast where there is none.
template <auto kValue>
std::string Spelling() {
  const std::string signature = __PRETTY_FUNCTION__;
  const size_t start = signature.find("kValue = ") + 9;
  return signature.substr(start, signature.find_first_of(";]", start) - start);
}

template <int kFirst, typename Enum, int... kOffset>
std::string SpellingOf(Enum value, std::integer_sequence<int, kOffset...>) {
  std::string spelling = "(";
  ((static_cast<int>(value) == kFirst + kOffset
        ? void(spelling = Spelling<static_cast<Enum>(kFirst + kOffset)>())
        : void()),
   ...);
  return spelling;
}

/// The enumerator's unqualified name. Its number when it has no name or is not among the 100
/// values from `kFirst` on.
template <int kFirst = 0, typename Enum>
std::string NameOf(Enum value) {
  const auto name = SpellingOf<kFirst>(value, std::make_integer_sequence<int, 100>());
  const bool has_name = name[0] != '(';
  return has_name ? name.substr(name.rfind(':') + 1) : std::to_string(static_cast<int>(value));
}
