#include "talvenor/io/EndianHandlingWriter.h"

#include <algorithm>

EndianHandlingWriter::~EndianHandlingWriter() = default;

unsigned int EndianHandlingWriter::GetMaximumOutputBlockSize() const
{
   return itsStream->GetMaximumOutputBlockSize();
}

// Values in the foreign order are reversed in a block on the stack; the caller's stay as they are.
template <class T>
void EndianHandlingWriter::WriteArray(const T* theValues, unsigned int theCount)
{
   constexpr unsigned int kNativeBlock = 0xFFFFFFF8;
   const bool isNative = TNEndian::IsNative(itsEndian);
   unsigned char aBuffer[16384];
   const auto* aPlace = reinterpret_cast<const unsigned char*>(theValues);
   for (UINT64 aRest = UINT64{theCount} * sizeof(T); aRest > 0;)
   {
      const UINT64 aLimit = isNative ? kNativeBlock : sizeof aBuffer;
      const auto aBlock = static_cast<unsigned int>(std::min(aRest, aLimit));
      if (isNative)
      {
         itsStream->Write(aPlace, aBlock);
      }
      else
      {
         std::memcpy(aBuffer, aPlace, aBlock);
         TNEndian::SwitchArray<T>(aBuffer, aBlock / sizeof(T));
         itsStream->Write(aBuffer, aBlock);
      }
      aPlace += aBlock;
      aRest -= aBlock;
   }
}

void EndianHandlingWriter::Write(const UINT16* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}

void EndianHandlingWriter::Write(const INT16* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}

void EndianHandlingWriter::Write(const UINT32* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}

void EndianHandlingWriter::Write(const INT32* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}

void EndianHandlingWriter::Write(const FLOAT* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}

void EndianHandlingWriter::Write(const DOUBLE* theValues, unsigned int theCount)
{
   WriteArray(theValues, theCount);
}
