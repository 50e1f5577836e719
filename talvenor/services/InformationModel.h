// The information models in which a peer is asked: their numbers, which a host's hooks are given, and the SOP classes
// that query and retrieve in them (PS3.4 C.6, K.6).
#pragma once

#include "talvenor/Export.h"

class UID;

enum InformationModel : int
{
   NoInformationModel = 0,
   PatientRootModel = 1,
   StudyRootModel = 2,
   PatientStudyOnlyModel = 3,
   ModalityWorklistModel = 4
};

namespace QuerySOPClass
{
inline constexpr char kPatientRoot[] = "1.2.840.10008.5.1.4.1.2.1.1";
inline constexpr char kStudyRoot[] = "1.2.840.10008.5.1.4.1.2.2.1";
inline constexpr char kPatientStudyOnly[] = "1.2.840.10008.5.1.4.1.2.3.1";
inline constexpr char kModalityWorklist[] = "1.2.840.10008.5.1.4.31";
} // namespace QuerySOPClass

namespace RetrieveSOPClass
{
inline constexpr char kPatientRoot[] = "1.2.840.10008.5.1.4.1.2.1.2";
inline constexpr char kStudyRoot[] = "1.2.840.10008.5.1.4.1.2.2.2";
inline constexpr char kPatientStudyOnly[] = "1.2.840.10008.5.1.4.1.2.3.2";
} // namespace RetrieveSOPClass

// The model in which theSOPClass queries, or retrieves; NoInformationModel for any other class.
TALVENOR_API InformationModel FindQueryModel(const UID& theSOPClass);
TALVENOR_API InformationModel FindRetrieveModel(const UID& theSOPClass);
