// Finds and loads the dictionaries that tn works with.
#pragma once

#include <string>

// Loads them from theFolder or, when that is empty, from the first of these that has them: the share folder of the
// installation that the running program belongs to, the source tree that it was built from. The private dictionaries
// are read when their creators are met. Throws std::runtime_error, naming what is missing or wrong.
void LoadDictionaries(const std::string& theFolder);
