#include "fuzz/Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/foundation/TNXInitializer.h"

namespace
{
bool LoadDictionaries()
{
   const RWCString aFolder = TALVENOR_SOURCE_DIR "/data/";
   Require(TNXInitializer::SetDataDictionary(aFolder + "dicom.dic"), "data/dicom.dic cannot be read");
   Require(TNXInitializer::SetUIDDictionary(aFolder + "uid.dic"), "data/uid.dic cannot be read");
   Require(PrivateDataDictionaryCatalog::AddDeferredIndexToDefaultCatalog(aFolder + "private/index"),
           "data/private/index cannot be read");
   gTNErrorLog.Off();
   return true;
}

// PS3.10 7.1, explicit VR little endian.
void AppendElement(FuzzBytes& theFile, UINT16 theElement, const char (&theType)[3], const RWCString& theValue)
{
   const std::size_t aLength = (theValue.size() + 1) & ~std::size_t{1};
   const unsigned char aHeader[] = {0x02,
                                    0x00,
                                    static_cast<unsigned char>(theElement),
                                    static_cast<unsigned char>(theElement >> 8),
                                    static_cast<unsigned char>(theType[0]),
                                    static_cast<unsigned char>(theType[1]),
                                    static_cast<unsigned char>(aLength),
                                    static_cast<unsigned char>(aLength >> 8)};
   theFile.insert(theFile.end(), std::begin(aHeader), std::end(aHeader));
   theFile.insert(theFile.end(), theValue.begin(), theValue.end());
   theFile.resize(theFile.size() + aLength - theValue.size());
}
} // namespace

void SetUpFuzzing()
{
   static const bool ourDictionariesAreLoaded = LoadDictionaries();
   (void)ourDictionariesAreLoaded;
}

std::ostream& NullOutput()
{
   class NullBuffer : public std::streambuf
   {
      int_type overflow(int_type theCharacter) override { return traits_type::not_eof(theCharacter); }
      std::streamsize xsputn(const char*, std::streamsize theCount) override { return theCount; }
   };
   static NullBuffer ourBuffer;
   static std::ostream ourOutput(&ourBuffer);
   return ourOutput;
}

void Report(const char* theText)
{
   std::fprintf(stderr, "%s\n", theText);
   std::abort();
}

FuzzBytes AsFile(const RWCString& theTransferSyntax, const unsigned char* theDataset, std::size_t theSize)
{
   FuzzBytes aFile(128);
   aFile.insert(aFile.end(), {'D', 'I', 'C', 'M'});
   AppendElement(aFile, 0x0000, "UL", RWCString(4, '\0'));
   AppendElement(aFile, 0x0010, "UI", theTransferSyntax);
   aFile.insert(aFile.end(), theDataset, theDataset + theSize);
   return aFile;
}

unsigned int PieceStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const std::size_t aCount = std::min<std::size_t>({theCount, itsPiece, itsBytes.size() - itsPosition});
   std::copy_n(itsBytes.data() + itsPosition, aCount, theBuffer);
   itsPosition += aCount;
   return static_cast<unsigned int>(aCount);
}
