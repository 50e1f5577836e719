// Compressed images on their own: files of JPEG (JPEG-LS as well) and JPEG 2000 (bare codestreams as well), and frames
// taken out of pixel data.
#pragma once

#include <ostream>
#include <string>

class InputStream;

enum class CodestreamKind
{
   None,
   JPEG,
   JPEG2000,
   JP2 // JPEG 2000 in boxes
};

// By the first bytes of the file; None also when it cannot be read.
CodestreamKind KindOfFile(const std::string& theName);

// Lists the images in the file: number, offset, length; in columns or as JSON objects.
void ListCodestreams(const std::string& theName, CodestreamKind theKind, bool theIsJson, std::ostream& theOutput);

// Prints markers or boxes.
void PrintMarkers(InputStream& theStream, CodestreamKind theKind, std::ostream& theOutput);
void PrintMarkersOfFile(const std::string& theName, CodestreamKind theKind, std::ostream& theOutput);
