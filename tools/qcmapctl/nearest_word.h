/// Finds the word that was probably meant.
#pragma once

#include <string>
#include <vector>

namespace qcmapctl {

/// The candidate that `word` differs least from; empty when none is close enough to be a slip.
std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace qcmapctl
