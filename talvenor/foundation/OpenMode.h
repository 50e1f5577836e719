// Open modes and sharing of the file streams, as the numbers that the public interfaces carry. The numbers are fixed:
// hosts store them and pass literals such as 10. Those of the C++ library differ, so every file class translates here.
#pragma once

#include <ios>

struct OpenMode
{
   // Bits of an open mode.
   static constexpr int In = 1;
   static constexpr int Out = 2;
   static constexpr int Ate = 4; // start at the end, once
   static constexpr int App = 8; // every write goes to the end
   static constexpr int Trunc = 16;
   static constexpr int Binary = 32;

   static constexpr int Append = Out | App; // 10: what log files are opened with

   // Sharing with other openers. Only this value has an effect worth a name: nobody is denied anything. Files are not
   // locked by being open on this platform, so every other number is accepted and means the same.
   static constexpr int Shared = 64;

   // The same mode in the bits of the C++ library. Unknown bits are ignored.
   static constexpr std::ios_base::openmode ToStandard(int theMode);
};

constexpr std::ios_base::openmode OpenMode::ToStandard(int theMode)
{
   struct Translation
   {
      int itsBit;
      std::ios_base::openmode itsMode;
   };
   constexpr Translation kTranslations[] = {
       {In, std::ios_base::in},   {Out, std::ios_base::out},     {Ate, std::ios_base::ate},
       {App, std::ios_base::app}, {Trunc, std::ios_base::trunc}, {Binary, std::ios_base::binary},
   };
   std::ios_base::openmode aMode{};
   for (const Translation& aTranslation : kTranslations)
   {
      if (theMode & aTranslation.itsBit)
      {
         aMode |= aTranslation.itsMode;
      }
   }
   return aMode;
}
