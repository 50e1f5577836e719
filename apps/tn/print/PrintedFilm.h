// Films that the node has printed, a folder each: the attributes of session and film box, each image as a DICOM file,
// and a picture of the sheet.
#pragma once

#include <string>
#include <vector>

class AbstractFilmBox;
class AbstractFilmSession;

// Makes the folders in theFolder and returns their paths. They appear whole, and are on the disk on return; when one of
// them cannot be written, none does, and std::runtime_error is thrown.
std::vector<std::string> WritePrintedFilms(const std::string& theFolder, const AbstractFilmSession& theSession,
                                           const std::vector<const AbstractFilmBox*>& theFilmBoxes);

// Removes what a process that was killed meanwhile has left in theFolder: hidden folders that are more than an hour
// old.
void RemoveUnfinishedFilms(const std::string& theFolder);
