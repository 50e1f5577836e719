// Finds and loads the dictionaries that tn works with.
#pragma once

#include <string>

// Loads them from theFolder or, when that is empty, from the first of these that has them: talvenor-data beside the
// running program, for one that is carried about; share/talvenor of the installation that it belongs to, as which a
// build tree looks, too. The private dictionaries are read when their creators are met. Throws std::runtime_error,
// naming what is missing or wrong.
void LoadDictionaries(const std::string& theFolder);
