// What tn finds wrong with datasets that the library reads without complaint, and where it was when reading failed.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "talvenor/foundation/ExceptionBase.h"

class InputTransferSyntax;
class Part10InputStream;

// A dataset that was read, but not whole, or not as what it is.
class IncompleteDataset : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

// Throws IncompleteDataset, saying which transfer syntax it is, when it is not one that the library serves.
void CheckIsServed(const Part10InputStream& theStream);

// What to say of a failure of the library while theDecoder decoded from theStream: what went wrong, and where.
std::string FaultText(const ExceptionBase& theException, const InputTransferSyntax& theDecoder,
                      const Part10InputStream& theStream);

// Runs theAction, which decodes. Throws IncompleteDataset with FaultText when it throws ExceptionBase.
template <class Action>
void DecodeWhole(const InputTransferSyntax& theDecoder, const Part10InputStream& theStream, Action theAction)
{
   try
   {
      theAction();
   }
   catch (const ExceptionBase& anException)
   {
      throw IncompleteDataset(FaultText(anException, theDecoder, theStream));
   }
}

// A decoder ends quietly where its bytes end between two elements. Throws IncompleteDataset when that was not the end
// of the dataset; theCount is the number of elements that were decoded.
void CheckIsWhole(const InputTransferSyntax& theDecoder, Part10InputStream& theStream, std::size_t theCount);
