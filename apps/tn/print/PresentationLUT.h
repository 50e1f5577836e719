// How the printer makes the levels of an image visible: the presentation LUT that the image box or else the film box
// refers to (PS3.3 C.11.4), in front of a screen. A level is a sample as a fraction of the highest one, turned round
// where photometric interpretation and polarity say so.
//
//    IDENTITY, none  the levels are P-values, equal steps for the eye: shown as they are
//    LIN OD          the levels are optical densities from Min Density, the brightest, to Max Density, which the eye sees
//                    as the standard display function says (PS3.14) on the lightbox
//    INVERSE         as IDENTITY, with black and white exchanged
//    a LUT           its entries are P-values; its range is spread over the levels of the image
#pragma once

#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class AbstractFilmBox;
class AbstractImageBox;
class DICOMDataObject;
class PrintObject;

class PresentationLUT
{
public:
   PresentationLUT(const AbstractFilmBox& theFilmBox, const AbstractImageBox& theBox);

   // What theObject, a film box or an image box, refers to; null when that is nothing that is there.
   static const PrintObject* Find(const PrintObject& theObject);

   // The P-value, from 0 to 1.
   double At(double theLevel) const;

private:
   void TakeTable(const DICOMDataObject& theTable);
   void TakeDensities(const AbstractFilmBox& theFilmBox);
   double DensityLevelOf(double theLevel) const;

   enum class Shape
   {
      Identity,
      LinearDensity,
      Inverse,
      Table
   };
   Shape itsShape = Shape::Identity;
   std::vector<double> itsTable;

   // Of a film on a lightbox.
   double itsLeastDensity = 0;
   double itsMostDensity = 0;
   double itsIllumination = 0; // of the lightbox, in cd/m2
   double itsAmbient = 0;      // reflected by the film, in cd/m2
};
