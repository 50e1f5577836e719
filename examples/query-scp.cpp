// A query provider in the study root model: answers C-FIND from a list of studies, which stands for a database.
//
//    query-scp PORT
#include <iostream>
#include <memory>

#include <talvenor/data/CompiledDictionaries.h>
#include <talvenor/talvenor.h>

namespace
{
struct Study
{
   const char* itsPatient;
   const char* itsID;
   const char* itsDate;
   const char* itsUID;
};

constexpr Study kStudies[] = {
    {"Lehto^Veikko", "4711", "20240112", "1.2.826.0.1.3680043.10.1.1"},
    {"Virtanen^Aino", "4712", "20240220", "1.2.826.0.1.3680043.10.1.2"},
};

void PushText(DICOMDataObject& theDataset, UINT16 theGroup, UINT16 theElement, const char* theText)
{
   theDataset.Push(new VR(theGroup, theElement, theText, 0)); // up to its NUL
}

// An attribute with a value has to match, one without only asks. What the keys may say beyond "equal" (PS3.4 C.2.2.2)
// is left out here.
bool Matches(const DICOMDataObject& theKeys, UINT16 theGroup, UINT16 theElement, const char* theValue)
{
   RWCString aKey;
   return !theKeys.GetString(theGroup, theElement, aKey) || aKey.empty() || aKey == "*" || aKey == theValue;
}

class StudyList : public StudyRootQuery
{
public:
   int DoQuery(DICOMDataObject& theKeys, int, const RWCString& thePeer,
               RWTValOrderedVector<DICOMDataObject*>& theMatches, UINT16& theStatus, RWCString& theComment,
               RWTValOrderedVector<MAttributeTag>& theOffending) override
   {
      RWCString aLevel;
      if (!theKeys.GetString(0x0008, 0x0052, aLevel) || aLevel != "STUDY")
      {
         theStatus = 0xA900; // the identifier does not match the SOP class
         theComment = "only studies are known here";
         theOffending = {MAttributeTag(0x0008, 0x0052)};
         return 0;
      }
      for (const Study& aStudy : kStudies)
      {
         if (Matches(theKeys, 0x0010, 0x0010, aStudy.itsPatient) && Matches(theKeys, 0x0010, 0x0020, aStudy.itsID) &&
             Matches(theKeys, 0x0008, 0x0020, aStudy.itsDate) && Matches(theKeys, 0x0020, 0x000D, aStudy.itsUID))
         {
            auto aMatch = std::make_unique<DICOMDataObject>();
            PushText(*aMatch, 0x0008, 0x0052, "STUDY");
            PushText(*aMatch, 0x0008, 0x0054, "EXAMPLE"); // retrieve AE title
            PushText(*aMatch, 0x0008, 0x0020, aStudy.itsDate);
            PushText(*aMatch, 0x0010, 0x0010, aStudy.itsPatient);
            PushText(*aMatch, 0x0010, 0x0020, aStudy.itsID);
            aMatch->Push(new VR(0x0020, 0x000D, UID(aStudy.itsUID)));
            theMatches.push_back(aMatch.release()); // the service destroys it
         }
      }
      std::cout << thePeer << " asked, matches: " << theMatches.size() << std::endl;
      return 1;
   }

   // For a requester; not called here.
   void CFindProgressCallback(PDU_Service&, DICOMCommandObject&, DICOMDataObject&, int) override {}
};
} // namespace

int main(int theCount, char** theArguments)
{
   TNXInitializer::SetDefaultSocketTimeout(60); // seconds
   Socket aListener;
   if (theCount != 2 || !CompiledDictionaries::Load() || !aListener.Listen(theArguments[1], 16))
   {
      std::cerr << "query-scp: cannot listen; usage: query-scp PORT\n";
      return 1;
   }
   StudyList aList;
   while (aListener.Accept(0)) // one association at a time: see storage-scp.cpp for threads
   {
      auto aStream = std::make_unique<SocketDULStream>();
      aStream->ManageConnection(aListener.UnmanageConnection());
      PDU_Service aService(SocketDULStreamFactory::GetInstance());
      DICOMCommandObject aCommand;
      aService.WaitForAssociationRequest(aStream.release());
      while (aService.ReadCommand(aCommand))
      {
         UINT16 aStatus = 0;
         RWCString aComment;
         unsigned int aCount = 0;
         if (!Verification().Read(aService, aCommand))
         {
            aList.Read(aService, aCommand, aStatus, aComment, aCount);
         }
      }
   }
}
