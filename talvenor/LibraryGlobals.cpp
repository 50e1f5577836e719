// Every global of the library that has a constructor, in the one order of building; they are taken down in reverse.
// One translation unit is the only order that C++ guarantees. constexpr and plain static values stay home, and so does
// every Mutex: it is constinit, ready before anything here and never taken down.
//
// An object may use what stands above it, in its constructor and its destructor, and nothing below. The tag
// dictionaries stand above the log streams, so that a dump in their last entries still finds the names of elements.
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

#ifdef TALVENOR_HAS_TRANSFER
#include "talvenor/transfer/TransferSyntaxType.h"
#endif

#ifdef TALVENOR_HAS_ASSOCIATION
#include "talvenor/association/PresentationContextUsageManager.h"
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

#ifdef TALVENOR_HAS_ASSOCIATION
PresentationContextUsageManager PresentationContextUsageManager::itsInstance;
#endif

#ifdef TALVENOR_HAS_TRANSFER
const RWCString TransferSyntaxType::TSLEImplicitUID = "1.2.840.10008.1.2";
const RWCString TransferSyntaxType::TSLEExplicitUID = "1.2.840.10008.1.2.1";
const RWCString TransferSyntaxType::TSBEExplicitUID = "1.2.840.10008.1.2.2";
const RWCString TransferSyntaxType::TSJPEG50UID = "1.2.840.10008.1.2.4.50";
const RWCString TransferSyntaxType::TSJPEG51UID = "1.2.840.10008.1.2.4.51";
const RWCString TransferSyntaxType::TSJPEG52UID = "1.2.840.10008.1.2.4.52";
const RWCString TransferSyntaxType::TSJPEG53UID = "1.2.840.10008.1.2.4.53";
const RWCString TransferSyntaxType::TSJPEG54UID = "1.2.840.10008.1.2.4.54";
const RWCString TransferSyntaxType::TSJPEG55UID = "1.2.840.10008.1.2.4.55";
const RWCString TransferSyntaxType::TSJPEG56UID = "1.2.840.10008.1.2.4.56";
const RWCString TransferSyntaxType::TSJPEG57UID = "1.2.840.10008.1.2.4.57";
const RWCString TransferSyntaxType::TSJPEG58UID = "1.2.840.10008.1.2.4.58";
const RWCString TransferSyntaxType::TSJPEG59UID = "1.2.840.10008.1.2.4.59";
const RWCString TransferSyntaxType::TSJPEG60UID = "1.2.840.10008.1.2.4.60";
const RWCString TransferSyntaxType::TSJPEG61UID = "1.2.840.10008.1.2.4.61";
const RWCString TransferSyntaxType::TSJPEG62UID = "1.2.840.10008.1.2.4.62";
const RWCString TransferSyntaxType::TSJPEG63UID = "1.2.840.10008.1.2.4.63";
const RWCString TransferSyntaxType::TSJPEG64UID = "1.2.840.10008.1.2.4.64";
const RWCString TransferSyntaxType::TSJPEG65UID = "1.2.840.10008.1.2.4.65";
const RWCString TransferSyntaxType::TSJPEG66UID = "1.2.840.10008.1.2.4.66";
const RWCString TransferSyntaxType::TSJPEG70UID = "1.2.840.10008.1.2.4.70";
const RWCString TransferSyntaxType::TSJPEGLSUID = "1.2.840.10008.1.2.4.80";
const RWCString TransferSyntaxType::TSJPEGNLSUID = "1.2.840.10008.1.2.4.81";
const RWCString TransferSyntaxType::TSJPEG2KLosslessUID = "1.2.840.10008.1.2.4.90";
const RWCString TransferSyntaxType::TSJPEG2KUID = "1.2.840.10008.1.2.4.91";
const RWCString TransferSyntaxType::TSRLEUID = "1.2.840.10008.1.2.5";
const RWCString TransferSyntaxType::TSDeflatedUID = "1.2.840.10008.1.2.1.99";
#endif
