#include "apps/tn/InputFile.h"

#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

InputFile::InputFile(const std::string& theName)
{
   constexpr int kForceDefaultVersion = 1;
   constexpr int kTolerant = 1;
   if (theName == "-")
   {
      auto aStream = std::make_unique<Part10InputStreamInputStream>();
      aStream->Open(itsStandardInput, kForceDefaultVersion, kTolerant);
      itsStream = std::move(aStream);
   }
   else
   {
      itsStream = std::make_unique<Part10FileInputStream>(theName, kForceDefaultVersion, kTolerant);
   }
   CheckTransferSyntax();
}

// Some writers state one syntax and write another. Decoding that gives garbage, often without an error; the first
// element of the dataset tells explicit VR from implicit.
void InputFile::CheckTransferSyntax()
{
   constexpr unsigned int kTagAndTwo = 8;
   if (itsStream->GetPart10Header() == nullptr)
   {
      return;   // guessed from those very bytes
   }
   const RWCString& aUID = itsStream->GetTransferSyntaxUID();
   const TransferSyntaxType* const aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aUID);
   unsigned char aBytes[kTagAndTwo];
   const unsigned int aCount = itsStream->Read(aBytes, sizeof aBytes);
   itsStream->Pushback(aBytes, aCount);
   if (aType == nullptr || aCount != sizeof aBytes)
   {
      return;
   }
   const auto isUpper = [](unsigned char theByte) { return theByte >= 'A' && theByte <= 'Z'; };
   const bool looksExplicit = isUpper(aBytes[4]) && isUpper(aBytes[5]);
   // In implicit VR these bytes are a length, and no first element is that long.
   if (aType->IsExplicit() && !looksExplicit && aBytes[6] == 0 && aBytes[7] == 0 && aBytes[5] == 0)
   {
      throw StreamIOException("the file states a transfer syntax with explicit VR but its dataset has implicit VR",
                              TN_INVALID_ENCODING, 0);
   }
   if (!aType->IsExplicit() && looksExplicit)
   {
      throw StreamIOException("the file states implicit VR but its dataset has explicit VR", TN_INVALID_ENCODING, 0);
   }
}
