// The boxes of a print session that own nothing: annotations of a film (PS3.4 H.4.4), and what is applied to an image:
// overlays, print overlays, look-up tables and presentation look-up tables (H.4.7 to H.4.10; all but the last are
// retired).
#pragma once

#include "talvenor/print/PrintObject.h"

class TALVENOR_API AbstractAnnotationBox : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
class TALVENOR_API AbstractOverlayBox : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
class TALVENOR_API AbstractPrintOverlayBox : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
class TALVENOR_API AbstractLUTBox : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
class TALVENOR_API AbstractPresentationLUTBox : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
