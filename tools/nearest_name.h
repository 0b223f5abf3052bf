// What a person may have meant by a word that nothing is called by.
#pragma once

#include <string>
#include <vector>

namespace tympan::tool {

/// The name that is the fewest slips of the keyboard away from the word: letters put in, left out,
/// changed, or swapped with their neighbour. Empty when none is near. A name that begins with the word
/// is near too.
std::string NearestName(const std::string& word, const std::vector<std::string>& names);

} // namespace tympan::tool
