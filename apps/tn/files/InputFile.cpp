#include "apps/tn/files/InputFile.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "apps/tn/files/LaterVRs.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr unsigned int kTagAndTwo = 8; // bytes: a tag, and a length or a VR with a short length
constexpr int kForceDefaultVersion = 1;
constexpr int kTolerant = 1;
} // namespace

void CheckIsReadable(const std::string& theName)
{
   std::error_code anIgnored; // opening it tells
   const std::filesystem::file_status aStatus = std::filesystem::status(theName, anIgnored);
   if (std::filesystem::is_directory(aStatus))
   {
      throw StreamIOException("it is a folder", TN_OPEN_FAILED, 0);
   }
   if (std::filesystem::is_other(aStatus))
   {
      throw StreamIOException("it is no regular file; - reads standard input", TN_OPEN_FAILED, 0);
   }
   if (std::filesystem::is_regular_file(aStatus) && std::filesystem::file_size(theName, anIgnored) <= kTagAndTwo)
   {
      throw NotDICOM(); // not even of one element
   }
}

InputFile::InputFile(const std::string& theName)
{
   if (theName == "-")
   {
      Open(itsStandardInput);
      return;
   }
   CheckIsReadable(theName);
   auto aStream = std::make_unique<WithLaterVRs<Part10FileInputStream>>(theName, kForceDefaultVersion, kTolerant);
   aStream->BeginDataset();
   itsStream = std::move(aStream);
   Check();
}

void InputFile::Open(InputStream& theSource)
{
   if (const INT64 aLength = theSource.Length(); aLength >= 0 && aLength <= kTagAndTwo)
   {
      throw NotDICOM(); // not even of one element
   }
   auto aStream = std::make_unique<WithLaterVRs<Part10InputStreamInputStream>>();
   aStream->Open(theSource, kForceDefaultVersion, kTolerant);
   aStream->BeginDataset();
   itsStream = std::move(aStream);
   Check();
}

void InputFile::Check()
{
   if (itsStream->GetPart10Header() == nullptr)
   {
      CheckIsDataset(); // its syntax was guessed from its first bytes
   }
   else
   {
      CheckTransferSyntax();
   }
}

// Without meta information every file could be a dataset; one that begins with zeros is none: (0000,0000) of length 0
// stands nowhere, but in many other files, and where a preamble is all that is left of a DICOM file.
void InputFile::CheckIsDataset()
{
   constexpr unsigned char kZeros[kTagAndTwo] = {};
   unsigned char aBytes[kTagAndTwo];
   const unsigned int aCount = itsStream->Read(aBytes, sizeof aBytes);
   itsStream->Pushback(aBytes, aCount);
   if (aCount == sizeof aBytes && std::equal(std::begin(kZeros), std::end(kZeros), aBytes))
   {
      throw NotDICOM();
   }
}

// Some writers state one syntax and write another. Decoding that gives garbage, often without an error; the first
// element of the dataset tells explicit VR from implicit.
void InputFile::CheckTransferSyntax()
{
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
