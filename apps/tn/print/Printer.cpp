#include "apps/tn/print/Printer.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "apps/tn/print/PrintedFilm.h"

Printer::Printer(std::string theName, std::string theFolder, UINT64 theMemory)
    : itsName(std::move(theName)), itsFolder(std::move(theFolder)), itsMemory(theMemory)
{
   RemoveUnfinishedFilms(itsFolder);
}

Printer::Status Printer::GetStatus() const
{
   constexpr std::uintmax_t kNone = 1 << 20; // bytes
   constexpr std::uintmax_t kLittle = 256 << 20;
   static constexpr Status kNormal = {"NORMAL", "NORMAL", 1};
   static constexpr Status kLow = {"WARNING", "SUPPLY LOW", 2};
   static constexpr Status kFull = {"FAILURE", "RECEIVER FULL", 3};
   static constexpr Status kDown = {"FAILURE", "PRINTER DOWN", 3};
   std::error_code anError;
   const std::filesystem::space_info aSpace = std::filesystem::space(itsFolder, anError);
   if (anError)
   {
      return kDown;
   }
   return aSpace.available < kNone ? kFull : aSpace.available < kLittle ? kLow : kNormal;
}

std::vector<std::string> Printer::Print(const AbstractFilmSession& theSession,
                                        const std::vector<const AbstractFilmBox*>& theFilmBoxes)
{
   itsSlots.acquire();
   const auto aRelease = [this](void*) { itsSlots.release(); };
   const std::unique_ptr<void, decltype(aRelease)> aSlot(this, aRelease);
   return WritePrintedFilms(itsFolder, theSession, theFilmBoxes);
}
