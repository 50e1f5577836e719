// The printer and a print job as a print session knows them (PS3.4 H.4.6, H.4.5): their attributes are what N-GET
// tells.
#pragma once

#include "talvenor/print/PrintObject.h"

// The one instance that every printer has. Its status is NORMAL until the host of an SCP says otherwise.
class TALVENOR_API AbstractPrinter : public PrintObject
{
public:
   static constexpr const char* kInstance = "1.2.840.10008.5.1.1.17";

   explicit AbstractPrinter(AbstractPrintManagementMeta& theMeta);
};

class TALVENOR_API AbstractPrintJob : public PrintObject
{
public:
   using PrintObject::PrintObject;
};
