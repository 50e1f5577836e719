#include "talvenor/ul/DULStream.h"

#include <algorithm>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/TNEndian.h"

namespace
{

template <class T>
unsigned int ReadBigEndian(DULStream& theStream, T& theValue)
{
   unsigned char aBytes[sizeof theValue];
   const unsigned int aCount = theStream.Read(aBytes, sizeof aBytes);
   if (aCount == sizeof aBytes)
   {
      theValue = TNEndian::Load<T, TNEndian::BigEndian>(aBytes);
   }
   return aCount;
}

template <class T>
void WriteBigEndian(DULStream& theStream, T theValue)
{
   unsigned char aBytes[sizeof theValue];
   TNEndian::Store<TNEndian::BigEndian>(aBytes, theValue);
   theStream.Write(aBytes, sizeof aBytes);
}

} // namespace

DULStream::~DULStream() = default;

unsigned int DULStream::Skip(unsigned int theCount)
{
   unsigned char aScratch[2048];
   unsigned int aSkipped = 0;
   while (aSkipped < theCount)
   {
      const unsigned int aCount = Read(aScratch, std::min<unsigned int>(theCount - aSkipped, sizeof aScratch));
      if (aCount == 0)
      {
         break;
      }
      aSkipped += aCount;
   }
   return aSkipped;
}

void DULStream::FlushOutput() {}

int DULStream::GetTimeout() const
{
   return 0;
}

int DULStream::SetTimeout(int)
{
   return 0;
}

int DULStream::BytesAvailable()
{
   return -1;
}

int DULStream::SetReadAheadLimit(unsigned int)
{
   return 1;
}

void DULStream::SetOutputLowWaterMark(unsigned int) {}

unsigned int DULStream::GetOutputLowWaterMark() const
{
   return 0;
}

void DULStream::SetOutputHighWaterMark(unsigned int) {}

unsigned int DULStream::GetOutputHighWaterMark() const
{
   return 0;
}

UINT32 DULStream::GetPreferredInputBlockSize() const
{
   return itsPreferredInputBlockSize;
}

UINT32 DULStream::GetMaximumOutputBlockSize() const
{
   return itsMaximumOutputBlockSize;
}

RWCString DULStream::GetPeerName()
{
   return {};
}

RWCString DULStream::GetPeerIPAddress() const
{
   return {};
}

RWCString DULStream::GetPeerPort() const
{
   return {};
}

int DULStream::InputConnected() const
{
   return 1;
}

int DULStream::OutputConnected() const
{
   return 1;
}

unsigned int DULStream::DULRead(unsigned char& theValue)
{
   return Read(&theValue, sizeof theValue);
}

unsigned int DULStream::DULRead(unsigned short& theValue)
{
   return ReadBigEndian(*this, theValue);
}

unsigned int DULStream::DULRead(unsigned int& theValue)
{
   return ReadBigEndian(*this, theValue);
}

void DULStream::DULWrite(unsigned char theValue)
{
   Write(&theValue, sizeof theValue);
}

void DULStream::DULWrite(unsigned short theValue)
{
   WriteBigEndian(*this, theValue);
}

void DULStream::DULWrite(unsigned int theValue)
{
   WriteBigEndian(*this, theValue);
}

TNTrace& DULStream::GetErrorLog() const
{
   return gTNErrorLog;
}

TNTrace& DULStream::GetTraceLog() const
{
   return gTNTracer;
}

bool DULStream::IsTraced() const
{
   return gTNTracer(TNTrace::TNTraceDULStream);
}
