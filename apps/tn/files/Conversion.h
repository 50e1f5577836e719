// Copies DICOM files into other transfer syntaxes, element by element: a file of any size passes in constant memory.
// Compressed pixel data is decompressed for a native one, frame by frame.
#pragma once

#include <stdexcept>
#include <string>

#include "apps/tn/base/AtomicFile.h"
#include "talvenor/foundation/BasicTypes.h"

class Part10InputStream;
class TransferSyntaxType;

// The file cannot be converted as asked: there is nothing wrong with it.
class ConversionRefused : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

// The file has no meta information, and what it has instead cannot be read as a dataset.
class NoDICOMFile : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

class Conversion
{
public:
   // theSyntax is the UID of a native transfer syntax, or empty for that of each file.
   explicit Conversion(RWCString theSyntax) : itsSyntax(std::move(theSyntax)) {}

   // Writes theTarget, which appears whole or not at all and may be theSource. Throws ConversionRefused, NoDICOMFile,
   // WriteFailure, ExceptionBase or IncompleteDataset.
   void Convert(const std::string& theSource, const std::string& theTarget);

   // The elements of the last file that no dataset may hold (private ones without a creator, illegal groups) and that
   // are not in its copy.
   UINT32 GetLeftOutCount() const { return itsLeftOutCount; }

private:
   const TransferSyntaxType& ChooseSyntax(const TransferSyntaxType& theSource) const;
   void Copy(Part10InputStream& theStream, const TransferSyntaxType& theType, const std::string& theTarget);

   RWCString itsSyntax;
   UINT32 itsLeftOutCount = 0;
};
