// Every global of the library that has a constructor, in the one order of building; they are taken down in reverse.
// One translation unit is the only order that C++ guarantees. constexpr and plain static values stay home, and so does
// every Mutex: it is constinit, ready before anything here and never taken down.
//
// An object may use what stands above it, in its constructor and its destructor, and nothing below. The dictionaries
// stand above the log streams, whose last entries may still look up a name.
//
// TALVENOR_HAS_X is defined when folder x is part of the build, which may stop at any height of the stack.
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/TNTrace.h"

#ifdef TALVENOR_HAS_DICTIONARY
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#endif

std::string AETitle::itsDefaultAETitle;

#ifdef TALVENOR_HAS_DICTIONARY
MDataDictionary MDataDictionary::itsDefaultDataDictionary;
PrivateDataDictionaryCatalog PrivateDataDictionaryCatalog::itsDefaultPrivateDataDictionaryCatalog;
InstanceSpecificDataDictionary InstanceSpecificDataDictionary::itsDefaultInstanceSpecificDataDictionary(
    MDataDictionary::itsDefaultDataDictionary, PrivateDataDictionaryCatalog::itsDefaultPrivateDataDictionaryCatalog);
#endif

TNTrace gTNTracer;
TNTrace gTNErrorLog;

#ifdef TALVENOR_HAS_DICTIONARY
MUIDDictionary MUIDDictionary::itsDefaultUIDDictionary;
#endif
