// The dictionaries of attributes and of UIDs (PS3.6), compiled into the companion library libtalvenor-data, for hosts
// that would rather not install and find files. They are those of the release that the library is built from,
// data/dicom.dic and data/uid.dic, byte for byte.
//
//    if (!CompiledDictionaries::Load()) ...   // at start-up, in place of the two setters of TNXInitializer
//
// Link with Talvenor::data (CMake) or talvenor-data (pkg-config). Private dictionaries stay files: see
// PrivateDataDictionaryCatalog.
#pragma once

#include <string_view>

#include "talvenor/Export.h"

class TALVENOR_API CompiledDictionaries
{
public:
   CompiledDictionaries() = delete;

   // Replaces both default dictionaries of the process. False when one of them is refused, which only a damaged build
   // can bring about. Call it once at start-up, before other threads use the library: nothing is locked.
   static bool Load();

   // The two texts, in the format of MDataDictionary and MUIDDictionary, for a host that fills dictionaries of its own.
   // They live as long as the process.
   static std::string_view GetAttributes();
   static std::string_view GetUIDs();
};
