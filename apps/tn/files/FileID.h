// The names by which a media directory refers to its files (PS3.10 8.2): the components of a path from the folder of
// the directory, which (0004,1500) lists.
#pragma once

#include <string>
#include <vector>

using FileID = std::vector<std::string>;

// Split at theSeparator; an empty text has no components.
FileID SplitFileID(const std::string& theText, char theSeparator);
std::string JoinFileID(const FileID& theFileID, char theSeparator);

// What makes it no file ID of the standard: up to 8 components of 1 to 8 characters of A-Z, 0-9 and "_". Empty when it
// is one. With theAnyNames components may be of any length and of all characters that survive in a directory.
std::string FaultOfFileID(const FileID& theFileID, bool theAnyNames);

// Whether it may name something that is not a file in the folder of the directory or below: not to be opened.
bool LeavesTheMedium(const FileID& theFileID);
