#include "apps/tn/print/PrintedFilm.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "apps/tn/base/Descriptor.h"
#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/base/LocalTime.h"
#include "apps/tn/base/SystemFailure.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/print/FilmSheet.h"
#include "apps/tn/print/PresentationLUT.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/DICOMFileType.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/print/AbstractFilmSession.h"
#include "talvenor/print/PrintMessages.h"

namespace
{
constexpr char kUnfinished[] = ".film-"; // with six letters behind it
constexpr char kSecondaryCapture[] = "1.2.840.10008.5.1.4.1.1.7";
constexpr UINT32 kImages[] = {PrintTags::kGrayscaleImageSequence, PrintTags::kColorImageSequence};

void PushText(DICOMDataObject& theDataset, UINT32 theTag, UINT16 theType, const std::string& theText)
{
   auto aVR = std::make_unique<VR>(GroupOf(theTag), ElementOf(theTag), theDataset.GetEndian());
   aVR->SetTypeCode(theType);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), theType == VRCode::UI ? '\0' : ' ');
   theDataset.Push(aVR.release());
}

void Save(DICOMDataObject& theDataset, const std::string& thePath, const RWCString& theSOPClass,
          const RWCString& theInstance)
{
   TNResultCode aCode = TN_NO_ERROR;
   int anError = 0;
   if (!theDataset.SaveToFile(thePath, GivenOrLittleEndianExplicitFile, RWCString(), aCode, anError, theSOPClass,
                              theInstance))
   {
      throw std::runtime_error(thePath + ": " + TNResult::Describe(aCode));
   }
}

// What a Secondary Capture image needs besides its pixels (PS3.3 A.8.1).
struct Attribute
{
   UINT32 itsTag;
   UINT16 itsType;
   const char* itsText;
};
constexpr Attribute kAttributes[] = {
    {0x00080020, VRCode::DA, ""},   {0x00080030, VRCode::TM, ""},    {0x00080050, VRCode::SH, ""},
    {0x00080060, VRCode::CS, "OT"}, {0x00080064, VRCode::CS, "WSD"}, {0x00080090, VRCode::PN, ""},
    {0x00100010, VRCode::PN, ""},   {0x00100020, VRCode::LO, ""},    {0x00100030, VRCode::DA, ""},
    {0x00100040, VRCode::CS, ""},   {0x00200010, VRCode::SH, ""},    {0x00200011, VRCode::IS, "1"},
    {0x00200020, VRCode::CS, ""},   {0x00200060, VRCode::CS, ""},
};

// The UIDs that the images of one film share.
struct Series
{
   RWCString itsStudy = MUIDFactory::GetInstance().GetUID();
   RWCString itsSeries = MUIDFactory::GetInstance().GetUID();
};

void SaveImage(const DICOMDataObject& theImage, const std::string& thePath, const Series& theSeries,
               unsigned int theNumber)
{
   DICOMDataObject aDataset(theImage);
   const RWCString anInstance = MUIDFactory::GetInstance().GetUID();
   for (const Attribute& anAttribute : kAttributes)
   {
      if (!FindVR(aDataset, anAttribute.itsTag))
      {
         PushText(aDataset, anAttribute.itsTag, anAttribute.itsType, anAttribute.itsText);
      }
   }
   PushText(aDataset, 0x00080016, VRCode::UI, kSecondaryCapture);
   PushText(aDataset, 0x00080018, VRCode::UI, anInstance);
   PushText(aDataset, 0x0020000D, VRCode::UI, theSeries.itsStudy);
   PushText(aDataset, 0x0020000E, VRCode::UI, theSeries.itsSeries);
   PushText(aDataset, 0x00200013, VRCode::IS, std::to_string(theNumber));
   Save(aDataset, thePath, kSecondaryCapture, anInstance);
}

void SaveImages(const AbstractFilmBox& theFilmBox, const std::string& theFolder)
{
   const Series aSeries;
   unsigned int aNumber = 0;
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      ++aNumber;
      char aName[32];
      std::snprintf(aName, sizeof aName, "/image-%03u.dcm", aNumber);
      for (const UINT32 aTag : kImages)
      {
         const VR* const aVR = FindVR(*aBox, aTag);
         const SequenceVR* const aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
         if (aSequence != nullptr && !aSequence->IsEmpty())
         {
            SaveImage(*aSequence->GetSequenceArray()->front(), theFolder + aName, aSeries, aNumber);
         }
      }
   }
}

void SavePart(const PrintObject& thePart, const std::string& thePath)
{
   DICOMDataObject aDataset(thePart);
   Save(aDataset, thePath, thePart.GetSOPClassUID().ToString(), thePart.GetSOPInstanceUID().ToString());
}

// The presentation LUTs that the film box and its image boxes refer to, each once.
void SaveLUTs(const AbstractFilmBox& theFilmBox, const std::string& theFolder)
{
   std::set<const PrintObject*> aLUTs = {PresentationLUT::Find(theFilmBox)};
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      aLUTs.insert(PresentationLUT::Find(*aBox));
   }
   aLUTs.erase(nullptr);
   unsigned int aNumber = 0;
   for (const PrintObject* const aLUT : aLUTs)
   {
      SavePart(*aLUT, theFolder + "/presentation-lut-" + std::to_string(++aNumber) + ".dcm");
   }
}

// Has what stands there, a file or a folder with its names, on the disk.
void Synchronise(const std::string& thePath)
{
   const Descriptor aFile(::open(thePath.c_str(), O_RDONLY | O_CLOEXEC));
   if (!aFile.IsOpen() || ::fsync(aFile.Get()) != 0)
   {
      throw SystemFailure(thePath + ": cannot be written to the disk");
   }
}

// With its files. What stays is removed when a printer begins later.
void RemoveFolder(const std::string& thePath) noexcept
{
   try
   {
      ForEachEntry(thePath,
                   [&](std::string_view theName, EntryKind) { ::unlink((thePath + "/").append(theName).c_str()); });
      ::rmdir(thePath.c_str());
   }
   catch (const std::bad_alloc&)
   {}
}

// A folder that is removed, with what it has, unless it is kept.
class FolderInTheMaking
{
public:
   explicit FolderInTheMaking(const std::string& theParent) : itsPath(theParent + "/" + kUnfinished + "XXXXXX")
   {
      if (::mkdtemp(itsPath.data()) == nullptr)
      {
         throw SystemFailure(itsPath);
      }
      std::filesystem::permissions(itsPath, std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
                                                std::filesystem::perms::group_exec);
   }
   ~FolderInTheMaking()
   {
      if (!itsIsKept)
      {
         RemoveFolder(itsPath);
      }
   }
   FolderInTheMaking(const FolderInTheMaking&) = delete;
   FolderInTheMaking& operator=(const FolderInTheMaking&) = delete;

   const std::string& GetPath() const { return itsPath; }
   void Keep() { itsIsKept = true; }

   void SynchroniseAll() const
   {
      const int anError = ForEachEntry(
          itsPath, [&](std::string_view theName, EntryKind) { Synchronise((itsPath + "/").append(theName)); });
      if (anError != 0)
      {
         throw SystemFailure(itsPath, anError);
      }
      Synchronise(itsPath);
   }

   // The first free one of theStem-1, theStem-2, ...
   void Name(const std::string& theStem)
   {
      for (unsigned int aNumber = 1;; ++aNumber)
      {
         const std::string aName = theStem + "-" + std::to_string(aNumber);
         if (std::rename(itsPath.c_str(), aName.c_str()) == 0)
         {
            itsPath = aName;
            return;
         }
         if (errno != ENOTEMPTY && errno != EEXIST)
         {
            throw SystemFailure(aName);
         }
      }
   }

private:
   std::string itsPath;
   bool itsIsKept = false;
};
} // namespace

std::vector<std::string> WritePrintedFilms(const std::string& theFolder, const AbstractFilmSession& theSession,
                                           const std::vector<const AbstractFilmBox*>& theFilmBoxes)
{
   std::deque<FolderInTheMaking> aFolders;
   for (const AbstractFilmBox* const aFilmBox : theFilmBoxes)
   {
      const FolderInTheMaking& aFolder = aFolders.emplace_back(theFolder);
      SavePart(theSession, aFolder.GetPath() + "/session.dcm");
      SavePart(*aFilmBox, aFolder.GetPath() + "/film.dcm");
      SaveImages(*aFilmBox, aFolder.GetPath());
      SaveLUTs(*aFilmBox, aFolder.GetPath());
      FilmSheet(*aFilmBox).Write(aFolder.GetPath() + "/sheet.png");
      aFolder.SynchroniseAll();
   }
   const std::string aStem = theFolder + "/film-" + LocalTimeText("%Y%m%d-%H%M%S");
   for (FolderInTheMaking& aFolder : aFolders)
   {
      aFolder.Name(aStem);
   }
   Synchronise(theFolder);
   std::vector<std::string> aPaths;
   for (FolderInTheMaking& aFolder : aFolders)
   {
      aFolder.Keep();
      aPaths.push_back(aFolder.GetPath());
   }
   return aPaths;
}

void RemoveUnfinishedFilms(const std::string& theFolder)
{
   const auto anHourAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
   ForEachEntry(theFolder, [&](std::string_view theName, EntryKind theKind) {
      const std::string aPath = (theFolder + "/").append(theName);
      std::error_code anIgnored;
      if (theKind == EntryKind::kFolder && theName.starts_with(kUnfinished) &&
          theName.size() == std::size(kUnfinished) - 1 + 6 &&
          std::filesystem::last_write_time(aPath, anIgnored) < anHourAgo)
      {
         RemoveFolder(aPath);
      }
   });
}
