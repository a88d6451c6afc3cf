/// Finds the word that the user probably meant, by counting typing errors.
#include "words/nearest_word.h"

#include <algorithm>
#include <cctype>

namespace words {
namespace {

/// The number of inserted, missing, wrong and swapped characters between two words.
size_t CountErrors(const std::string& left, const std::string& right) {
  std::vector<std::vector<size_t>> errors(left.size() + 1, std::vector<size_t>(right.size() + 1));
  for (size_t i = 0; i <= left.size(); ++i) errors[i][0] = i;
  for (size_t j = 0; j <= right.size(); ++j) errors[0][j] = j;
  for (size_t i = 1; i <= left.size(); ++i) {
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t wrong = left[i - 1] == right[j - 1] ? 0 : 1;
      errors[i][j] =
          std::min({errors[i - 1][j] + 1, errors[i][j - 1] + 1, errors[i - 1][j - 1] + wrong});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        errors[i][j] = std::min(errors[i][j], errors[i - 2][j - 2] + 1);
      }
    }
  }
  return errors[left.size()][right.size()];
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
    const std::string known = InSmallLetters(candidate);
    const bool begun = word.size() >= 2 && known.compare(0, written.size(), written) == 0;
    const size_t errors = begun ? 1 : CountErrors(written, known);
    if (errors < fewest) {
      fewest = errors;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace words
