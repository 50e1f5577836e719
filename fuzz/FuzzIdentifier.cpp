// A query as a node answers it: the identifier is the input. It is put to an index and to worklist items, among them
// what the input itself says as an instance; whatever comes out must be sendable in either native syntax.
//
//    byte 0     bits 0 and 1 the information model, 2 relational queries, 3 the syntax
//    the rest   the identifier
#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "apps/tn/answers/IdentifierMatcher.h"
#include "apps/tn/answers/IndexQuery.h"
#include "apps/tn/answers/QueryPlan.h"
#include "apps/tn/archive/IndexDatabase.h"
#include "fuzz/Fuzzing.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/io/OutputStream.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr char kInputInstance[] = "1.2.3.9";

struct Nowhere : OutputStream
{
   using OutputStream::Write;
   void Write(const unsigned char*, unsigned int) override {}
   void Flush() override {}
};

const TransferSyntaxType& SyntaxOf(bool theIsExplicit)
{
   using Type = TransferSyntaxType;
   return *TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theIsExplicit ? Type::TSLEExplicitUID
                                                                                           : Type::TSLEImplicitUID);
}

IndexedInstance Instance(const std::string& theUID, const std::string& theName, const std::string& theCharacterSet)
{
   IndexedInstance anInstance;
   anInstance.itsPath = theUID;
   InstanceKeys& aKeys = anInstance.itsKeys;
   for (std::size_t aKey = 0; aKey < InstanceKeys::kCount; ++aKey)
   {
      aKeys[aKey] = std::to_string(aKey);
   }
   aKeys[Key::kCharacterSet] = theCharacterSet;
   aKeys[Key::kSOPInstance] = theUID;
   aKeys[Key::kStudy] = "1.2.3";
   aKeys[Key::kPatientID] = theName;
   return anInstance;
}

// An archive of two instances in a file of this process.
class Archive
{
public:
   Archive() : itsPath("/tmp/fuzz-index-" + std::to_string(::getpid())), itsWriter(itsPath), itsReader(itsPath, 1)
   {
      itsWriter.Add(Instance("1.2.3.1", "DOE^JOHN", ""));
      itsWriter.Add(Instance("1.2.3.2", "Buc^J\xe9r\xf4me", "ISO_IR 100"));
   }
   ~Archive()
   {
      for (const char* aSuffix : {"", "-wal", "-shm"})
      {
         std::remove((itsPath + aSuffix).c_str());
      }
   }

   std::string itsPath;
   IndexDatabase itsWriter;
   SQLiteDatabase itsReader;
};

void RequireSendable(DICOMDataObject& theMatch)
{
   try
   {
      for (const bool isExplicit : {false, true})
      {
         Nowhere aSink;
         const std::unique_ptr<OutputTransferSyntax> anEncoder(SyntaxOf(isExplicit).CreateOutputTransferSyntax(aSink));
         anEncoder->SaveDICOMObject(theMatch);
      }
   }
   catch (const ExceptionBase& anException)
   {
      Require(false, anException.why());
   }
}

// False for one that cannot be read.
bool Read(const unsigned char* theBytes, std::size_t theCount, bool theIsExplicit, DICOMDataObject& theIdentifier,
          InstanceKeys& theKeys)
{
   const FuzzBytes aBytes(theBytes, theBytes + theCount);
   try
   {
      PieceStream aStream(aBytes, 4096);
      const std::unique_ptr<InputTransferSyntax> aDecoder(SyntaxOf(theIsExplicit).CreateInputTransferSyntax(aStream));
      while (VR* const aVR = aDecoder->NextVR())
      {
         theIdentifier.Push(aVR);
      }
   }
   catch (const ExceptionBase&)
   {
      return false;
   }
   try
   {
      PieceStream aStream(aBytes, 4096);
      const std::unique_ptr<InputTransferSyntax> aDecoder(SyntaxOf(theIsExplicit).CreateInputTransferSyntax(aStream));
      theKeys.ReadWhole(*aDecoder);
   }
   catch (const ExceptionBase&)
   {}
   catch (const BrokenDataset&)
   {}
   return true;
}

void AskIndex(Archive& theArchive, IndexModel theModel, bool theIsRelational, const DICOMDataObject& theIdentifier)
{
   try
   {
      const QueryPlan aPlan(theModel, theIdentifier, {theIsRelational, "ARCHIVE"});
      IndexQuery aQuery(theArchive.itsReader, aPlan);
      while (const auto aMatch = aQuery.Next())
      {
         RequireSendable(*aMatch);
      }
   }
   catch (const BadIdentifier& aFault)
   {
      Require(aFault.what()[0] != '\0', "a refusal without a text");
   }
}

void AskWorklist(const DICOMDataObject& theIdentifier)
{
   try
   {
      const IdentifierMatcher aMatcher(theIdentifier);
      aMatcher.Matches(theIdentifier);
      aMatcher.MakeAnswer(theIdentifier);
      const DICOMDataObject anEmpty;
      aMatcher.Matches(anEmpty);
      aMatcher.MakeAnswer(anEmpty);
   }
   catch (const ValueMatcher::BadKey& aFault)
   {
      Require(aFault.what()[0] != '\0', "a refusal without a text");
   }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theBytes, std::size_t theCount)
{
   SetUpFuzzing();
   static Archive anArchive;
   if (theCount == 0)
   {
      return 0;
   }
   const unsigned int aDecision = theBytes[0];
   DICOMDataObject anIdentifier;
   IndexedInstance anInstance;
   if (!Read(theBytes + 1, theCount - 1, (aDecision & 8) != 0, anIdentifier, anInstance.itsKeys))
   {
      return 0;
   }
   constexpr IndexModel kModels[] = {IndexModel::kPatientRoot, IndexModel::kStudyRoot, IndexModel::kPatientStudyOnly};
   anInstance.itsPath = kInputInstance;
   anInstance.itsKeys[Key::kSOPInstance] = kInputInstance;
   anArchive.itsWriter.Add(anInstance);
   AskIndex(anArchive, kModels[(aDecision & 3) % 3], (aDecision & 4) != 0, anIdentifier);
   anArchive.itsWriter.Remove(kInputInstance);
   AskWorklist(anIdentifier);
   return 0;
}
