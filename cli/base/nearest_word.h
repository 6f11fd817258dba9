#pragma once

#include <string>
#include <vector>

/// The word that is most like `text`, in letters to be changed, added, dropped or swapped; empty when none is alike.
std::string nearestWord(const std::string& text, const std::vector<std::string>& words);
