#include "talvenor/transfer/OutputTransferSyntax.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/transfer/ElementEncoder.h"
#include "talvenor/transfer/EncapsulationFragmentWriter.h"

namespace
{
class DiscardingOutputStream final : public OutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char*, unsigned int) override {}
   void Flush() override {}
};

constinit DiscardingOutputStream gDiscardingStream;

std::string_view WithoutBlanks(std::string_view theText)
{
   const std::size_t aFirst = theText.find_first_not_of(' ');
   return aFirst == std::string_view::npos ? std::string_view()
                                           : theText.substr(aFirst, theText.find_last_not_of(' ') - aFirst + 1);
}

bool IsNeverWritten(UINT16 theOddGroup)
{
   return !InstanceSpecificDataDictionary::IsValidPrivateGroup(theOddGroup); // 0001 to 0007 and FFFF
}
} // namespace

OutputStream& OutputTransferSyntax::NullOutputStream = gDiscardingStream;

VROutputStream::~VROutputStream() = default;
DICOMObjectOutputStream::~DICOMObjectOutputStream() = default;
EncapsulationFragmentWriter::~EncapsulationFragmentWriter() = default;
OutputTransferSyntax::~OutputTransferSyntax() = default;

OutputTransferSyntax::OutputTransferSyntax(const OutputTransferSyntax& theOther)
    : TransferSyntax(theOther), DICOMObjectOutputStream(theOther), VROutputStream(theOther),
      itsStream(theOther.itsStream), itsWrittenAllocations(theOther.itsWrittenAllocations)
{}

EncapsulationFragmentWriter* OutputTransferSyntax::GetEncapsulationFragmentWriter()
{
   return nullptr;
}

void OutputTransferSyntax::SaveVR(VR* theVR)
{
   const std::unique_ptr<VR> aVR(theVR);
   SaveVR(*aVR);
}

unsigned int OutputTransferSyntax::GetMaximumOutputBlockSize() const
{
   return itsStream.GetMaximumOutputBlockSize();
}

bool OutputTransferSyntax::PassesGroupFilter(VR& theVR, UINT32& theTag)
{
   if (&itsStream == &NullOutputStream || IsWrittenOddGroup(theVR, theTag))
   {
      return true;
   }
   itsRoot->itsLeftOutCount += theVR.GetElement() != 0; // nobody misses a group length
   if (theVR.IsStreamBuffered())
   {
      GetNullEncoder().SaveVR(theVR); // the stream behind it must move past it
   }
   return false;
}

bool OutputTransferSyntax::IsWrittenOddGroup(const VR& theVR, UINT32& theTag)
{
   if (IsNeverWritten(theVR.GetGroup()))
   {
      return false;
   }
   if (InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(theVR))
   {
      return IsWrittenCreator(theVR, theTag);
   }
   const PrivateAllocation* const anOwner = GetLookupDictionary().FindBlockOwner(theVR.GetGroup(), theVR.GetElement());
   return anOwner != nullptr && itsWrittenAllocations.contains(*anOwner);
}

// A creator is written once for a group, under the block that the dictionary has for it.
bool OutputTransferSyntax::IsWrittenCreator(const VR& theVR, UINT32& theTag)
{
   const std::string_view aValue(reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength());
   PrivateAllocation anAllocation(RWCString(WithoutBlanks(aValue)), theVR.GetGroup());
   MAttributeTag aTag(theVR.GetGroup(), theVR.GetElement());
   if (itsWrittenAllocations.contains(anAllocation) ||
       !GetDataDictionary().GetPrivateAllocation(anAllocation.GetPrivateCreatorID(), aTag))
   {
      return false;
   }
   itsWrittenAllocations.insert(std::move(anAllocation));
   theTag = aTag.GetTag();
   return true;
}

OutputTransferSyntax& OutputTransferSyntax::GetNullEncoder()
{
   if (!itsNullEncoder)
   {
      itsNullEncoder.reset(Clone(NullOutputStream));
   }
   return *itsNullEncoder;
}

std::unique_ptr<OutputTransferSyntax> OutputTransferSyntax::CloneForItem(OutputStream& theStream,
                                                                         LengthPatchingOutputStream* thePatcher)
{
   std::unique_ptr<OutputTransferSyntax> anEncoder(Clone(theStream));
   anEncoder->itsPatcher = thePatcher;
   anEncoder->itsRoot = itsRoot;
   return anEncoder;
}

HeaderBytes OutputTransferSyntax::MakeItemHeader(UINT32 theTag, UINT32 theLength)
{
   const TNEndian::EndianType anEndian = GetEndianHandlingWriter().GetEndian();
   HeaderBytes aHeader;
   TNEndian::Store(aHeader.itsBytes, static_cast<UINT16>(theTag >> 16), anEndian);
   TNEndian::Store(aHeader.itsBytes + 2, static_cast<UINT16>(theTag), anEndian);
   TNEndian::Store(aHeader.itsBytes + 4, theLength, anEndian);
   aHeader.itsCount = 8;
   return aHeader;
}

void OutputTransferSyntax::WriteItemHeader(OutputStream& theStream, UINT32 theTag, UINT32 theLength)
{
   const HeaderBytes aHeader = MakeItemHeader(theTag, theLength);
   theStream.Write(aHeader.itsBytes, aHeader.itsCount);
}
