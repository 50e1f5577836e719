// Loads the bytes of a file as a host does, and says what became of them.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/FileBytes.h"
#include "support/PiecewiseInputStream.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/foundation/StreamIOException.h"

// What became of a file.
struct LoadOutcome
{
   bool operator==(const LoadOutcome&) const = default;

   TNResultCode itsCode = TN_NO_ERROR;
   InputTransferSyntax::LevelEnd itsEnd = InputTransferSyntax::NotEnded;
   bool itsIsCut = false;
   bool itsHasHeader = false;
   UINT32 itsEntries = 0;
   RWCString itsPath; // of the fault
   RWCString itsText;

   bool IsTold() const { return itsCode != TN_NO_ERROR || itsIsCut; }
   bool IsNothing() const { return !itsHasHeader; } // of a file that should have meta information: not one of ours
};

inline std::ostream& operator<<(std::ostream& theText, const LoadOutcome& theOutcome)
{
   return theText << "code " << theOutcome.itsCode << ", end " << theOutcome.itsEnd << ", cut " << theOutcome.itsIsCut
                  << ", entries " << theOutcome.itsEntries << ", path \"" << theOutcome.itsPath << "\", "
                  << theOutcome.itsText;
}

template <class MakeStream>
LoadOutcome LoadFrom(MakeStream theMakeStream, DICOMDataObject& theObject)
{
   LoadOutcome anOutcome;
   std::unique_ptr<Part10InputStream> aStream;
   std::optional<DICOMObjectLoader> aLoader;
   try
   {
      aStream = theMakeStream();
      anOutcome.itsHasHeader = aStream->GetPart10Header() != nullptr;
      aLoader.emplace(theObject, *aStream);
      aLoader->Load();
   }
   catch (const StreamIOException& anException)
   {
      anOutcome.itsCode = anException.GetResultCode();
      anOutcome.itsText = anException.why();
   }
   if (aLoader)
   {
      anOutcome.itsEnd = aLoader->GetDecoder().GetLevelEnd();
      anOutcome.itsIsCut = aLoader->GetDecoder().IsCut();
      anOutcome.itsPath = aLoader->GetDecoder().GetFaultPath();
   }
   anOutcome.itsEntries = theObject.Entries();
   return anOutcome;
}

// Of a copy of exactly that size, so that a sanitizer sees a read behind its end.
inline LoadOutcome LoadFromMemory(const std::string& theFile, DICOMDataObject& theObject)
{
   return LoadFrom([&] { return OpenBytes(theFile, 1, 1); }, theObject);
}

// From memory, and once more as from a network: both must end the same way.
inline LoadOutcome Load(const std::string& theFile)
{
   DICOMDataObject anObject;
   const LoadOutcome anOutcome = LoadFromMemory(theFile, anObject);
   if (theFile.size() >= 144) // a stream of unknown length needs a whole header
   {
      PiecewiseInputStream aSource({theFile.begin(), theFile.end()}, 7);
      DICOMDataObject aSecond;
      const auto anOpen = [&] {
         auto aStream = std::make_unique<Part10InputStreamInputStream>();
         aStream->Open(aSource, 1, 1);
         return aStream;
      };
      EXPECT_EQ(LoadFrom(anOpen, aSecond), anOutcome) << "from a stream of pieces";
   }
   return anOutcome;
}
