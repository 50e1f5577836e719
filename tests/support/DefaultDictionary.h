// A public dictionary of a test's own in place of the process-wide one, which comes back at the end.
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

#include "talvenor/dictionary/MDataDictionary.h"

class DefaultDictionary
{
public:
   // theText is the content of a dictionary file.
   explicit DefaultDictionary(const std::string& theText) : itsPrevious(MDataDictionary::GetDefaultDataDictionary())
   {
      std::istringstream aStream(theText);
      if (!MDataDictionary::GetDefaultDataDictionary().Load(aStream))
      {
         throw std::runtime_error("DefaultDictionary: cannot load");
      }
   }
   ~DefaultDictionary() { MDataDictionary::GetDefaultDataDictionary() = itsPrevious; }
   DefaultDictionary(const DefaultDictionary&) = delete;
   DefaultDictionary& operator=(const DefaultDictionary&) = delete;

private:
   MDataDictionary itsPrevious;
};
