/// Finds the word that the user probably meant.
#pragma once

#include <string>
#include <vector>

namespace words {

/// The candidate that differs least from `word`; empty if all differ too much for a typing error.
/// Capital letters make no difference.
std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace words
