#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

#include <filesystem>
#include <fstream>

#include "talvenor/dictionary/DictionaryLine.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/TNTrace.h"

PrivateDataDictionaryCatalog::PrivateDataDictionaryCatalog() = default;

PrivateDataDictionaryCatalog::PrivateDataDictionaryCatalog(const PrivateDataDictionaryCatalog& theOther)
{
   CopyFrom(theOther);
}

PrivateDataDictionaryCatalog& PrivateDataDictionaryCatalog::operator=(const PrivateDataDictionaryCatalog& theOther)
{
   if (this != &theOther)
   {
      itsSlots.clear();
      CopyFrom(theOther);
   }
   return *this;
}

PrivateDataDictionaryCatalog::~PrivateDataDictionaryCatalog() = default;

void PrivateDataDictionaryCatalog::CopyFrom(const PrivateDataDictionaryCatalog& theOther)
{
   const std::lock_guard aLock(theOther.itsLoadMutex); // a pending slot must not be copied half read
   for (const auto& [aCreator, aSlot] : theOther.itsSlots)
   {
      auto aCopy = std::make_unique<Slot>();
      if (const MPrivateDataDictionary* aDictionary = aSlot->itsDictionary.load(std::memory_order_acquire))
      {
         aCopy->itsDictionary = new MPrivateDataDictionary(*aDictionary);
      }
      aCopy->itsIsPending = aSlot->itsIsPending.load();
      aCopy->itsFileName = aSlot->itsFileName;
      itsSlots.emplace(aCreator, std::move(aCopy));
   }
}

int PrivateDataDictionaryCatalog::Add(MPrivateDataDictionary* theDictionary)
{
   std::unique_ptr<MPrivateDataDictionary> aDictionary(theDictionary);
   if (aDictionary == nullptr || aDictionary->GetPrivateCreatorID().empty())
   {
      return 0;
   }
   const RWCString aCreator = aDictionary->GetPrivateCreatorID();
   const auto aPlace = itsSlots.find(aCreator);
   if (aPlace != itsSlots.end() && aPlace->second->itsDictionary.load() != nullptr)
   {
      return 0;
   }
   auto aSlot = std::make_unique<Slot>();
   aSlot->itsDictionary = aDictionary.release();
   itsSlots.insert_or_assign(aCreator, std::move(aSlot));
   return 1;
}

const MPrivateDataDictionary* PrivateDataDictionaryCatalog::Find(std::string_view theCreator) const
{
   const auto aPlace = itsSlots.find(theCreator);
   if (aPlace == itsSlots.end())
   {
      return nullptr;
   }
   Slot& aSlot = *aPlace->second;
   // Pending goes from true to false once, after the dictionary was set: whoever sees false sees the dictionary.
   return aSlot.itsIsPending.load(std::memory_order_acquire) ? LoadDeferred(aPlace->first, aSlot)
                                                             : aSlot.itsDictionary.load(std::memory_order_relaxed);
}

const MPrivateDataDictionary* PrivateDataDictionaryCatalog::LoadDeferred(const RWCString& theCreator,
                                                                         Slot& theSlot) const
{
   RWCString aFault;
   {
      const std::lock_guard aLock(itsLoadMutex);
      if (theSlot.itsIsPending.load(std::memory_order_relaxed))
      {
         aFault = ReadFile(theCreator, theSlot);
         theSlot.itsIsPending.store(false, std::memory_order_release);
      }
   }
   // Not under the lock: what takes the log's entries, or writes one just now, may look up creators itself.
   if (!aFault.empty())
   {
      startentry(gTNErrorLog) << "PrivateDataDictionaryCatalog::Find(\"" << theCreator
                              << "\"): Error: " << theSlot.itsFileName << " is not used: " << aFault << "\n"
                              << endentry;
   }
   return theSlot.itsDictionary.load(std::memory_order_relaxed);
}

RWCString PrivateDataDictionaryCatalog::ReadFile(const RWCString& theCreator, Slot& theSlot)
{
   try
   {
      auto aDictionary = std::make_unique<MPrivateDataDictionary>(theSlot.itsFileName);
      if (aDictionary->GetPrivateCreatorID() != theCreator)
      {
         return "the creator of the file is \"" + aDictionary->GetPrivateCreatorID() + "\"";
      }
      theSlot.itsDictionary.store(aDictionary.release(), std::memory_order_relaxed);
      return {};
   }
   catch (const TalvenorException& anException)
   {
      return anException.GetMessage();
   }
}

MPrivateDataDictionary* PrivateDataDictionaryCatalog::Remove(std::string_view theCreator)
{
   Find(theCreator); // reads a deferred file: the caller gets the dictionary that Find would have given
   const auto aPlace = itsSlots.find(theCreator);
   if (aPlace == itsSlots.end())
   {
      return nullptr;
   }
   MPrivateDataDictionary* aDictionary = aPlace->second->itsDictionary.exchange(nullptr);
   itsSlots.erase(aPlace);
   return aDictionary;
}

int PrivateDataDictionaryCatalog::RemoveAndDestroy(std::string_view theCreator)
{
   const std::unique_ptr<MPrivateDataDictionary> aDictionary(Remove(theCreator));
   return aDictionary != nullptr ? 1 : 0;
}

int PrivateDataDictionaryCatalog::AddDeferred(const RWCString& theCreator, const RWCString& theFileName)
{
   if (theCreator.empty())
   {
      return 0;
   }
   auto aSlot = std::make_unique<Slot>();
   aSlot->itsFileName = theFileName;
   aSlot->itsIsPending = true;
   return itsSlots.try_emplace(theCreator, std::move(aSlot)).second ? 1 : 0;
}

int PrivateDataDictionaryCatalog::AddDeferredIndex(const RWCString& theIndexFileName)
{
   std::ifstream aStream;
   if (!OpenDictionaryFile(theIndexFileName, aStream))
   {
      return 0;
   }
   // With its last slash; empty for a name in the current folder.
   const RWCString aFolder = theIndexFileName.substr(0, theIndexFileName.rfind('/') + 1);
   DictionaryLineReader aReader(aStream);
   std::string_view aText;
   while (aReader.Next(aText))
   {
      if (IsSkippedDictionaryLine(aText))
      {
         continue;
      }
      DictionaryLine aLine(aText);
      std::string_view aFileName;
      const bool aHasName = aLine.Field(aFileName) && !aFileName.empty();
      const RWCString aCreator(aLine.LastField());
      if (!aHasName || aCreator.empty())
      {
         const RWCString aFault = "Invalid private dictionary index entry at line " + std::to_string(aReader.Number()) +
                                  ": " + RWCString(aText);
         throw InvalidEntryDescriptionException(aFault.c_str(), "", 0);
      }
      AddDeferred(aCreator, aFileName.starts_with('/') ? RWCString(aFileName) : aFolder + RWCString(aFileName));
   }
   return aReader.Failed() ? 0 : 1;
}

int PrivateDataDictionaryCatalog::AddDeferredToDefaultCatalog(const RWCString& theCreator, const RWCString& theFileName)
{
   return itsDefaultPrivateDataDictionaryCatalog.AddDeferred(theCreator, theFileName);
}

int PrivateDataDictionaryCatalog::AddDeferredIndexToDefaultCatalog(const RWCString& theIndexFileName)
{
   return itsDefaultPrivateDataDictionaryCatalog.AddDeferredIndex(theIndexFileName);
}

int PrivateDataDictionaryCatalog::AddToDefaultCatalog(MPrivateDataDictionary* theDictionary)
{
   return itsDefaultPrivateDataDictionaryCatalog.Add(theDictionary);
}

int PrivateDataDictionaryCatalog::AddToDefaultCatalog(const RWCString& theFileName)
{
   return AddToDefaultCatalog(new MPrivateDataDictionary(theFileName));
}

int PrivateDataDictionaryCatalog::AddToDefaultCatalog(const RWTValOrderedVector<RWCString>& theFileNames)
{
   for (const RWCString& aFileName : theFileNames)
   {
      try
      {
         if (AddToDefaultCatalog(aFileName) == 0)
         {
            return 0;
         }
      }
      catch (const InvalidEntryDescriptionException& anException)
      {
         const RWCString aText =
             "PrivateDataDictionaryCatalog::AddToDefaultCatalog(FileList): Error: " + anException.GetMessage();
         throw InvalidEntryDescriptionException(aText.c_str(), "", 0);
      }
   }
   return 1;
}
