// From stored samples to grey levels for a printer: rescale or modality LUT, window or VOI LUT, and the shape of the
// presentation LUT (PS3.3 C.11.1, C.11.2; PS3.4 N.2). Black is 0 whatever the image says of itself.
#pragma once

#include <functional>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class FrameSource;

class GreyPipeline
{
public:
   // Of a frame with one sample a pixel and no palette. Without window and VOI LUT the levels of the frame are spread.
   explicit GreyPipeline(const FrameSource& theFrame);

   // From 0 (black) to 1.
   double LevelOf(INT32 theStored) const;

private:
   struct Table // a look-up table of the image, PS3.3 C.11.1.1
   {
      double itsFirst = 0;
      double itsMost = 0; // the largest entry that its bits can hold
      std::vector<UINT16> itsEntries;

      double At(double theValue) const;
   };

   static bool TakeTable(const FrameSource& theFrame, UINT32 theSequence, Table& theTable);
   void TakeWindow(const FrameSource& theFrame);
   void Spread(const FrameSource& theFrame);
   double ModalityOf(INT32 theStored) const;
   double WindowLevelOf(double theValue) const;

   Table itsModality; // empty where rescale slope and intercept count
   double itsSlope = 1;
   double itsIntercept = 0;

   enum class Function
   {
      Linear,
      LinearExact,
      Sigmoid
   };
   Table itsVOI; // empty where the window counts
   Function itsFunction = Function::Linear;
   double itsCentre = 0;
   double itsWidth = 0;
   bool itsIsInverse = false;
};
