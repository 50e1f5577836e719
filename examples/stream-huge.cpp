// Copies a file of any size as explicit VR little endian in a few megabytes of memory, with the patient's name
// replaced. Elements pass one at a time; pixel data and sequences are copied while they are still in the file.
// Encapsulated files keep their transfer syntax.
//
//    stream-huge FILE NEW-FILE NAME
#include <iostream>
#include <memory>

#include <talvenor/data/CompiledDictionaries.h>
#include <talvenor/talvenor.h>

namespace
{
void Copy(const char* theSource, const char* theTarget, const char* theName)
{
   Part10FileInputStream anInput(theSource);
   anInput.OpenFile();
   const std::unique_ptr<InputTransferSyntax> aDecoder = anInput.CreateDecoder();
   const TransferSyntaxType* aSyntax = &aDecoder->GetTransferSyntaxType();
   if (!aSyntax->IsEncapsulated())
   {
      aSyntax = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(TransferSyntaxType::TSLEExplicitUID);
   }
   if (anInput.GetPart10Header() == nullptr)
   {
      throw StreamIOException("no meta information", TN_INVALID_FILE_HANDLE, 0);
   }
   Part10Header aHeader(*anInput.GetPart10Header());
   aHeader.SetTransferSyntaxUID(aSyntax->GetUID());
   Part10FileOutputStream anOutput(theTarget, aHeader);
   const std::unique_ptr<OutputTransferSyntax> anEncoder(aSyntax->CreateOutputTransferSyntax(anOutput));

   while (std::unique_ptr<VR> aVR{aDecoder->NextVR()}) // null at the end; throws for a file that is broken
   {
      if (aVR->GetTag() == 0x00100010)
      {
         aVR = std::make_unique<VR>(UINT16{0x0010}, UINT16{0x0010}, theName, 0u);
         aVR->SetTypeCode(0x504E); // PN
      }
      anEncoder->SaveVR(aVR.release());
   }
   if (aDecoder->IsCut())
   {
      throw StreamIOException("the file is cut", TN_END_OF_FILE, 0);
   }
   anOutput.Close(); // throws when something could not be written
}
} // namespace

int main(int theCount, char** theArguments)
{
   if (theCount != 4 || !CompiledDictionaries::Load())
   {
      std::cerr << "stream-huge: usage: stream-huge FILE NEW-FILE NAME\n";
      return 2;
   }
   TNXInitializer::SetDefaultFileBufferSize(1 << 20); // read and write a mebibyte at a time
   try
   {
      Copy(theArguments[1], theArguments[2], theArguments[3]);
   }
   catch (const ExceptionBase& anException)
   {
      std::cerr << "stream-huge: " << anException.ToString() << "\n";
      return 1;
   }
}
