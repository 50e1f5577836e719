// The files of a folder and of those below it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// The paths of the regular files, from theFolder on, in order. Links to folders are not followed: they may lead in
// circles. A folder that cannot be read is told to theFault, and the others are listed.
std::vector<std::string> FilesBelow(const std::filesystem::path& theFolder,
                                    const std::function<void(const std::string& theText)>& theFault);
