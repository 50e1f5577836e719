// The picture of a printed sheet: its images where the display format has them (PS3.3 C.13.3), fit into their boxes,
// with their polarity and their presentation LUT. Made to be looked at on a screen, which shows P-values as its own
// levels.
#pragma once

#include <string>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class AbstractFilmBox;
class AbstractImageBox;

class FilmSheet
{
public:
   // Draws theFilmBox, in sRGB. Its images have been checked by the SCP of its session.
   explicit FilmSheet(const AbstractFilmBox& theFilmBox);

   // As PNG. Throws std::runtime_error.
   void Write(const std::string& thePath) const;

   UINT32 GetWidth() const { return itsWidth; }
   UINT32 GetHeight() const { return itsHeight; }
   const std::vector<unsigned char>& GetPixels() const { return itsPixels; } // red, green, blue; rows from the top

private:
   struct Place // in pixels
   {
      double itsLeft, itsTop, itsWidth, itsHeight;
   };

   void SetSize(const AbstractFilmBox& theFilmBox);
   std::vector<Place> FindPlaces(const RWCString& theFormat) const;
   void Draw(const AbstractFilmBox& theFilmBox, const AbstractImageBox& theBox, const Place& thePlace);

   UINT32 itsWidth = 0;
   UINT32 itsHeight = 0;
   std::vector<unsigned char> itsPixels;
};
