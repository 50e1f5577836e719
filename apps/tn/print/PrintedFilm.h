// A film that the node has printed, as a folder: the attributes of session and film box, each image as a DICOM file, and a
// picture of the sheet. The folder appears whole or not at all.
#pragma once

#include <string>

class AbstractFilmBox;
class AbstractFilmSession;

// Makes the folder in theFolder and returns its path. Throws std::runtime_error.
std::string WritePrintedFilm(const std::string& theFolder, const AbstractFilmSession& theSession,
                             const AbstractFilmBox& theFilmBox);
