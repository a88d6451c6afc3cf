/// Finds the word that was probably meant, by counting slips of the typing hand.
#include "nearest_word.h"

#include <algorithm>

namespace qcmapctl {
namespace {

/// Inserted, missing, wrong and swapped neighbouring characters between two words.
size_t CountSlips(const std::string& left, const std::string& right) {
  std::vector<std::vector<size_t>> slips(left.size() + 1, std::vector<size_t>(right.size() + 1));
  for (size_t i = 0; i <= left.size(); ++i) slips[i][0] = i;
  for (size_t j = 0; j <= right.size(); ++j) slips[0][j] = j;
  for (size_t i = 1; i <= left.size(); ++i) {
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t wrong = left[i - 1] == right[j - 1] ? 0 : 1;
      slips[i][j] =
          std::min({slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + wrong});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
      }
    }
  }
  return slips[left.size()][right.size()];
}

}  // namespace

std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates) {
  std::string nearest;
  // A third of the word may be wrong, and of a short one still a single character.
  size_t fewest = std::max<size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const bool begun = word.size() >= 2 && candidate.compare(0, word.size(), word) == 0;
    const size_t slips = begun ? 1 : CountSlips(word, candidate);
    if (slips < fewest) {
      fewest = slips;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace qcmapctl
