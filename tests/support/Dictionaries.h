// The dictionaries of a dataset, from texts: a public one, a catalog with a private one, and the one that asks both.
#pragma once

#include <sstream>
#include <string>

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

struct Dictionaries
{
   explicit Dictionaries(const std::string& thePublic, const std::string& thePrivate = "")
   {
      std::istringstream aPublic(thePublic);
      itsPublic.Load(aPublic);
      if (!thePrivate.empty())
      {
         std::istringstream aPrivate(thePrivate);
         itsCatalog.Add(new MPrivateDataDictionary(aPrivate));
      }
   }

   MDataDictionary itsPublic;
   PrivateDataDictionaryCatalog itsCatalog;
   InstanceSpecificDataDictionary itsDictionary{itsPublic, itsCatalog};
};
