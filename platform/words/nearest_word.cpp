/// Finds the word that the user probably meant, by counting typing errors.
#include "words/nearest_word.h"

#include <strings.h>

#include <algorithm>
#include <cctype>

namespace words {
namespace {

/// The number of inserted, missing, wrong and swapped characters between two words.
size_t CountErrors(const std::string& left, const std::string& right) {
  const size_t width = right.size() + 1;
  std::vector<size_t> table((left.size() + 1) * width);
  for (size_t j = 0; j < width; ++j) table[j] = j;
  for (size_t i = 1; i <= left.size(); ++i) {
    size_t* const errors = &table[i * width];
    const size_t* const above = errors - width;
    errors[0] = i;
    for (size_t j = 1; j < width; ++j) {
      const size_t wrong = left[i - 1] == right[j - 1] ? 0 : 1;
      errors[j] = std::min(std::min(above[j], errors[j - 1]) + 1, above[j - 1] + wrong);
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
        errors[j] = std::min(errors[j], table[(i - 2) * width + j - 2] + 1);
    }
  }
  return table.back();
}

std::string InSmallLetters(std::string word) {
  for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return word;
}

}  // namespace

std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string written = InSmallLetters(word);
  std::string nearest;
  // A third of the characters may be wrong, and at least one.
  size_t fewest = std::max<size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const bool begun =
        word.size() >= 2 && ::strncasecmp(candidate.c_str(), word.c_str(), word.size()) == 0;
    // Each character by which one is longer is an error, so most candidates need no counting.
    const auto [shorter, longer] = std::minmax({word.size(), candidate.size()});
    if (!begun && longer - shorter >= fewest) continue;
    const size_t errors = begun ? 1 : CountErrors(written, InSmallLetters(candidate));
    if (errors < fewest) {
      fewest = errors;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace words
