/// Splits commands into words and checks each word.
#include "server/words.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "numbers/parse_number.h"
#include "words/nearest_word.h"

namespace sim {
namespace {

/// Shorter and longer words are no typing errors.
constexpr size_t kMinNearBytes = 2, kMaxNearBytes = 40;
/// How many names a message lists when none of them is near.
constexpr size_t kMaxListed = 6;
constexpr uint64_t kMaxHours = uint64_t{24} * 366;

std::string Join(const std::vector<std::string>& words) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : ", ") + word;
  return joined;
}

}  // namespace

Words::Words(const std::string& line) {
  std::istringstream text(line);
  words_.assign(std::istream_iterator<std::string>(text), {});
}

void Words::SplitAt(char separator) {
  std::string rest;
  while (HasMore()) rest += Next() + " ";
  std::replace(rest.begin(), rest.end(), separator, ' ');
  *this = Words(rest);
}

std::string Words::Next() {
  if (!HasMore()) throw WrongCommand("a word is missing");
  return words_[next_++];
}

uint64_t Words::Number(uint64_t min, uint64_t max) {
  const std::string word = Next();
  uint64_t number;
  if (!ParseNumber(word, max, number) || number < min)
    throw WrongCommand("'" + word + "' is not a number from " + std::to_string(min) + " to " +
                       std::to_string(max));
  return number;
}

std::chrono::milliseconds Words::Duration() {
  constexpr uint64_t kUnitMs[] = {1, 1000, 60000, 3600000};
  const std::string word = Next();
  const size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
  Words unit(digits < word.size() ? word.substr(digits) : "(none)");
  const uint64_t unit_ms = kUnitMs[unit.OneOf("unit", {"ms", "s", "min", "h"})];
  Words number(word.substr(0, digits));
  return std::chrono::milliseconds(number.Number(0, kMaxHours * kUnitMs[3] / unit_ms) * unit_ms);
}

size_t Words::OneOf(const char* what, const std::vector<const char*>& known) {
  const std::string word = Next();
  const auto found = std::find(known.begin(), known.end(), word);
  if (found != known.end()) return static_cast<size_t>(found - known.begin());
  const std::vector<std::string> names(known.begin(), known.end());
  std::string message = std::string("unknown ") + what + " '" + word + "'";
  const std::string nearest = word.size() >= kMinNearBytes && word.size() <= kMaxNearBytes
                                  ? words::NearestWord(word, names)
                                  : std::string();
  if (!nearest.empty()) message += "; did you mean '" + nearest + "'?";
  if (nearest.empty() && names.size() <= kMaxListed) message += "; known are " + Join(names);
  throw WrongCommand(message);
}

void Words::End() const {
  if (HasMore()) throw WrongCommand("'" + words_[next_] + "' is one word too many");
}

}  // namespace sim
