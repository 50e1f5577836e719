#include "talvenor/transfer/InputTransferSyntax.h"

#include <cstdio>

#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/BoundedInputStream.h"
#include "talvenor/transfer/ElementHeader.h"
#include "talvenor/transfer/TransferSyntaxType.h"

InputTransferSyntax::InputTransferSyntax(InputStream& theStream) : itsStream(theStream) {}

InputTransferSyntax::InputTransferSyntax(InputStream* theStream) : itsStream(*theStream), itsOwnedStream(theStream) {}

InputTransferSyntax::~InputTransferSyntax() = default;

std::unique_ptr<InputTransferSyntax> InputTransferSyntax::MakeContentDecoder(const TransferSyntaxType& theType,
                                                                             UINT32 theTag, UINT32 theLength)
{
   if (itsDepth == 2 * kMaximumDepth) // a sequence and its item are a decoder each
   {
      throw StreamIOException("InputTransferSyntax::NextVR(): sequences nested deeper than 256 levels",
                              TN_INVALID_ELEMENT_HEADER, 0);
   }
   std::unique_ptr<BoundedInputStream> aWindow;
   if (theLength != VR::kUndefinedLength)
   {
      aWindow = std::make_unique<BoundedInputStream>(itsStream, theLength);
   }
   BoundedInputStream* const aNearestWindow = aWindow ? aWindow.get() : itsWindow;
   std::unique_ptr<InputTransferSyntax> aContent(aWindow ? theType.CreateInputTransferSyntax(aWindow.release())
                                                         : theType.CreateInputTransferSyntax(itsStream));
   aContent->itsRoot = itsRoot;
   aContent->itsOuter = this;
   aContent->itsWindow = aNearestWindow;
   aContent->itsHasOwnWindow = theLength != VR::kUndefinedLength;
   aContent->itsIsShortened =
       aContent->itsHasOwnWindow && itsWindow != nullptr && theLength > itsWindow->GetRemaining();
   aContent->itsTag = theTag;
   aContent->itsItemNumber = theTag == ElementHeader::kItem ? itsItemCount++ : 0;
   aContent->itsDepth = static_cast<UINT16>(itsDepth + 1);
   return aContent;
}

void InputTransferSyntax::FailForElements()
{
   itsRoot->itsElementsLeft = 0;
   throw StreamIOException("InputTransferSyntax::NextVR(): more elements than are taken", TN_INVALID_ENCODING, 0);
}

void InputTransferSyntax::EndLevel(LevelEnd theEnd)
{
   itsLevelEnd = theEnd;
   if (theEnd != AtEndOfStream && itsHasOwnWindow)
   {
      itsWindow->SkipRemaining(); // a delimiter ends the content; the stated length still tells where the level ends
   }
   if (IsEndedShort() && !itsRoot->itsIsCut)
   {
      itsRoot->itsIsCut = true;
      NoteFault();
   }
}

bool InputTransferSyntax::IsEndedShort() const
{
   if (itsOuter == nullptr)
   {
      return false;
   }
   return itsHasOwnWindow ? itsIsShortened || itsWindow->GetRemaining() > 0 : itsLevelEnd == AtEndOfStream;
}

void InputTransferSyntax::NoteFault()
{
   itsRoot->itsFaultPath = GetPath();
}

RWCString InputTransferSyntax::GetPath() const
{
   if (itsOuter == nullptr)
   {
      return RWCString();
   }
   char aStep[16];
   if (itsTag == ElementHeader::kItem)
   {
      std::snprintf(aStep, sizeof aStep, "[%u]", itsItemNumber);
   }
   else
   {
      std::snprintf(aStep, sizeof aStep, "/%04x,%04x", itsTag >> 16, itsTag & 0xFFFF);
   }
   return itsOuter->GetPath() + aStep;
}
