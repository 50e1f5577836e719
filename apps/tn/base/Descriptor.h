// Owns a file descriptor of the operating system.
#pragma once

#include <utility>

#include <unistd.h>

class Descriptor
{
public:
   explicit Descriptor(int theNumber = -1) : itsNumber(theNumber) {}
   Descriptor(Descriptor&& theOther) noexcept : itsNumber(std::exchange(theOther.itsNumber, -1)) {}
   Descriptor& operator=(Descriptor&& theOther) noexcept
   {
      std::swap(itsNumber, theOther.itsNumber);
      return *this;
   }
   ~Descriptor() { Close(); }

   bool IsOpen() const { return itsNumber >= 0; }
   int Get() const { return itsNumber; }

   // Somebody else closes it.
   int Release() { return std::exchange(itsNumber, -1); }

   // 0, or -1 with errno.
   int Close()
   {
      const int aNumber = std::exchange(itsNumber, -1);
      return aNumber >= 0 ? ::close(aNumber) : 0;
   }

private:
   int itsNumber;
};
