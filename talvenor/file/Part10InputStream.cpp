#include "talvenor/file/Part10InputStream.h"

#include <algorithm>
#include <cstring>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dataset/VRAccessEndian.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr UINT16 kMetaGroup = 0x0002;
constexpr UINT32 kMetaGroupLength = 0x00020000;
constexpr unsigned int kSkipBlock = 2048;

[[noreturn]] void ThrowOpen(const char* theText, TNResultCode theCode)
{
   throw StreamIOException((RWCString("Part10InputStream::Open(): ") + theText).c_str(), theCode, 0);
}

bool IsVRLike(const unsigned char* theBytes)
{
   return IsKnownVRCode(LoadUINT16<TNEndian::BigEndian>(theBytes));
}
} // namespace

Part10InputStream::Part10InputStream() = default;

Part10InputStream::~Part10InputStream() = default;

unsigned int Part10InputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   unsigned int aTotal = itsPushedBack != 0 ? TakePushedBack(theBuffer, theCount) : 0;
   while (aTotal < theCount)
   {
      const unsigned int aCount = ReadImpl(theBuffer + aTotal, theCount - aTotal);
      if (aCount == 0)
      {
         break;
      }
      aTotal += aCount;
   }
   itsPosition += aTotal;
   return aTotal;
}

unsigned int Part10InputStream::TakePushedBack(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aCount = std::min(theCount, itsPushedBack);
   std::copy_n(std::end(itsPushback) - itsPushedBack, aCount, theBuffer);
   itsPushedBack -= aCount;
   return aCount;
}

unsigned int Part10InputStream::Skip(unsigned int theCount)
{
   const UINT64 aTarget = itsPosition + theCount;
   if (CanSeek() && aTarget <= 0xFFFFFFFF) // a seek beyond would go backwards
   {
      Seek(static_cast<unsigned int>(aTarget));
      return theCount;
   }
   return SkipByReading(theCount);
}

unsigned int Part10InputStream::SkipByReading(unsigned int theCount)
{
   unsigned char aBlock[kSkipBlock];
   unsigned int aTotal = 0;
   while (aTotal < theCount)
   {
      const unsigned int aCount = Read(aBlock, std::min(theCount - aTotal, kSkipBlock));
      if (aCount == 0)
      {
         break;
      }
      aTotal += aCount;
   }
   return aTotal;
}

void Part10InputStream::Seek(unsigned int thePosition)
{
   if (thePosition == itsPosition)
   {
      return;
   }
   if (thePosition > itsPosition && thePosition - itsPosition <= itsPushedBack)
   {
      itsPushedBack -= thePosition - itsPosition;
   }
   else
   {
      SeekImpl(thePosition);
      itsPushedBack = 0;
   }
   itsPosition = thePosition;
}

void Part10InputStream::Close()
{
   itsPushedBack = 0;
}

void Part10InputStream::Pushback(const unsigned char* theBytes, unsigned int theCount)
{
   if (theCount > GetPushbackLimit())
   {
      throw StreamIOException("Part10InputStream::Pushback: Pushback limit exceeded", TN_INTERNAL_ERROR, 0);
   }
   if (theCount > itsPosition)
   {
      throw StreamIOException("Part10InputStream::Pushback: Pushback length > current stream position",
                              TN_INTERNAL_ERROR, 0);
   }
   itsPushedBack += theCount;
   std::copy_n(theBytes, theCount, std::end(itsPushback) - itsPushedBack);
   itsPosition -= theCount;
}

unsigned int Part10InputStream::GetPreferredInputBlockSize() const
{
   return InputStream::GetPreferredInputBlockSize();
}

void Part10InputStream::SetPreferredInputBlockSize(unsigned int theSize)
{
   InputStream::SetPreferredInputBlockSize(theSize);
}

// What an earlier source left behind.
void Part10InputStream::Discard()
{
   itsPushedBack = 0;
   itsPosition = 0;
   itsHeaderSize = 0;
   itsMetaInformation.reset();
   itsHeader.reset();
   itsTransferSyntaxUID.clear();
}

void Part10InputStream::Open(int theForceDefaultVersion, int theTolerant)
{
   Discard();
   unsigned char aBuffer[kHeaderBufferSize];
   const unsigned int aWanted =
       itsKnowsFileSize ? std::min<unsigned int>(GetFileSize(), kHeaderBufferSize) : kHeaderBufferSize;
   if (Read(aBuffer, aWanted) != aWanted)
   {
      ThrowOpen("read header: EOF before entire header read", TN_END_OF_FILE);
   }
   if (aWanted == kHeaderBufferSize && std::memcmp(aBuffer + kMagicOffset, "DICM", 4) == 0)
   {
      ReadMetaInformation(aBuffer, theForceDefaultVersion, theTolerant);
   }
   else
   {
      Pushback(aBuffer, aWanted);
      if (aWanted <= 8)
      {
         ThrowOpen("File less than 8 bytes long", TN_PARSE_TO_OBJECT_FAILED);
      }
      itsTransferSyntaxUID = GuessTransferSyntax(aBuffer);
   }
   itsHeaderSize = GetStreamPosition();
}

void Part10InputStream::ReadMetaInformation(const unsigned char* theHeaderBytes, int theForceDefaultVersion,
                                            int theTolerant)
{
   const unsigned char* const aFirstBytes = theHeaderBytes + kMetaOffset;
   Pushback(aFirstBytes, kHeaderBufferSize - kMetaOffset);
   bool isImplicit = false;
   const std::unique_ptr<InputTransferSyntax> aDecoder = OpenMetaInformation(aFirstBytes, isImplicit);
   itsMetaInformation = std::make_unique<DICOMDataObject>(TNEndian::LittleEndian);
   ReadMetaElements(*aDecoder, *itsMetaInformation);
   try
   {
      itsHeader = std::make_unique<Part10Header>(theHeaderBytes, *itsMetaInformation,
                                                 theForceDefaultVersion || isImplicit, theTolerant);
   }
   catch (const ConstructorError& anError)
   {
      ThrowOpen((RWCString("Invalid Part10 header: ") + anError.why()).c_str(), TN_PARSE_TO_OBJECT_FAILED);
   }
   itsTransferSyntaxUID = itsHeader->GetTransferSyntaxUID();
}

// The decoder that understands the group length, with which the meta information begins. PS3.10 demands explicit VR,
// but implicit is met.
std::unique_ptr<InputTransferSyntax> Part10InputStream::OpenMetaInformation(const unsigned char* theFirstBytes,
                                                                            bool& theIsImplicit)
{
   for (const bool isImplicit : {false, true})
   {
      std::unique_ptr<InputTransferSyntax> aDecoder;
      if (isImplicit)
      {
         RewindTo(theFirstBytes);
         aDecoder = std::make_unique<LittleEndianImplicitInputTransferSyntax>(*this);
      }
      else
      {
         aDecoder = std::make_unique<LittleEndianExplicitInputTransferSyntax>(*this);
      }
      const std::unique_ptr<VR> aVR(aDecoder->NextVR());
      if (!aVR)
      {
         ThrowOpen("read header: EOF while reading group 2 group length code", TN_END_OF_FILE);
      }
      if (aVR->GetTag() != kMetaGroupLength)
      {
         ThrowOpen("read header: Group 2 group length code missing", TN_PARSE_TO_OBJECT_FAILED);
      }
      UINT32 aLength = 0; // only to be readable: it is too often wrong to be relied on
      if (VRAccessLE(*aVR).GetUINT32(aLength))
      {
         theIsImplicit = isImplicit;
         return aDecoder;
      }
   }
   ThrowOpen("read header: Error accessing group 2 group length code", TN_PARSE_TO_OBJECT_FAILED);
}

// Back to the first meta element, of which at most the bytes that had been pushed back may have been taken.
void Part10InputStream::RewindTo(const unsigned char* theFirstBytes)
{
   constexpr unsigned int kFirstBytes = kHeaderBufferSize - kMetaOffset;
   if (itsPosition > kHeaderBufferSize)
   {
      ThrowOpen("read header: Error accessing group 2 group length code", TN_PARSE_TO_OBJECT_FAILED);
   }
   itsPosition = kHeaderBufferSize;
   itsPushedBack = 0;
   Pushback(theFirstBytes, kFirstBytes);
}

void Part10InputStream::ReadMetaElements(InputTransferSyntax& theDecoder, DICOMDataObject& theMetaInformation)
{
   do
   {
      std::unique_ptr<VR> aVR(theDecoder.NextVR());
      if (!aVR)
      {
         return;
      }
      if (aVR->GetGroup() != kMetaGroup)
      {
         ThrowOpen("read header: Non-group-2 data element in file meta information", TN_PARSE_TO_OBJECT_FAILED);
      }
      theMetaInformation.Push(aVR.release());
   } while (IsMetaElementNext());
}

bool Part10InputStream::IsMetaElementNext()
{
   unsigned char aGroup[2];
   const unsigned int aCount = Read(aGroup, sizeof aGroup);
   Pushback(aGroup, aCount);
   return aCount == sizeof aGroup && LoadUINT16<TNEndian::LittleEndian>(aGroup) == kMetaGroup;
}

std::unique_ptr<InputTransferSyntax> Part10InputStream::CreateDecoder()
{
   const TransferSyntaxType* const aType =
       TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(itsTransferSyntaxUID);
   if (aType == nullptr)
   {
      const RWCString aText = "Unknown transfer syntax type: " + itsTransferSyntaxUID;
      throw StreamIOException(aText.c_str(), TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
   }
   return std::unique_ptr<InputTransferSyntax>(aType->CreateInputTransferSyntax(*this));
}

const RWCString& Part10InputStream::GuessTransferSyntax(const unsigned char* theBytes)
{
   using Type = TransferSyntaxType;

   // The smaller byte of a group number is the high one: groups below 0x0100 are the rule. In group 0000 the element
   // number decides, and in (0000,0000), the group length, the length field.
   unsigned int aFirst = theBytes[0];
   unsigned int aSecond = theBytes[1];
   if (aFirst == 0 && aSecond == 0)
   {
      aFirst = theBytes[2];
      aSecond = theBytes[3];
      if (aFirst == 0 && aSecond == 0)
      {
         if (theBytes[4] != 'U' || theBytes[5] != 'L')
         {
            return Type::TSLEImplicitUID;
         }
         return theBytes[6] < theBytes[7] ? Type::TSBEExplicitUID : Type::TSLEExplicitUID;
      }
   }
   if (!IsVRLike(theBytes + 4))
   {
      return Type::TSLEImplicitUID;
   }
   return aSecond <= aFirst ? Type::TSLEExplicitUID : Type::TSBEExplicitUID;
}
