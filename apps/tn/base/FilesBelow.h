// The files of a folder and of those below it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

enum class EntryKind
{
   kFile, // also a link to one
   kFolder,
   kOther // or gone meanwhile
};

// Calls theVisitor with the name and the kind of each entry of a folder, except itself and the one above. Returns 0, or
// what errno says. In place of std::filesystem::directory_iterator, which may end the program when there is no memory.
int ForEachEntry(const std::string& thePath,
                 const std::function<void(std::string_view theName, EntryKind theKind)>& theVisitor);

// The paths of the regular files, from theFolder on, in order. Links to folders are not followed: they may lead in
// circles. A folder that cannot be read is told to theFault, and the others are listed.
std::vector<std::string> FilesBelow(const std::filesystem::path& theFolder,
                                    const std::function<void(const std::string& theText)>& theFault);
