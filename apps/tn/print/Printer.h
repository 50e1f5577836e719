// The printer that a node is: the folder of its films, how it is, and the memory of its print sessions. All
// associations share it. Any thread.
#pragma once

#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

#include "apps/tn/print/PrintMemory.h"

class AbstractFilmBox;
class AbstractFilmSession;

class Printer
{
public:
   // The folder exists; what a printer that was ended in the middle of a print has left there is removed. theMemory is
   // in bytes.
   Printer(std::string theName, std::string theFolder, UINT64 theMemory);

   // PS3.3 C.13.9, with the event that reports it (PS3.4 H.4.6.2.2).
   struct Status
   {
      std::string_view itsText; // NORMAL, WARNING or FAILURE
      std::string_view itsInfo;
      UINT16 itsEvent;

      bool operator==(const Status&) const = default;
   };

   // What the folder is good for at the moment: there is room for films, little room, or none.
   Status GetStatus() const;

   const std::string& GetName() const { return itsName; }
   PrintMemory& GetMemory() { return itsMemory; }

   // Writes the films, all or none, and returns their folders (PrintedFilm.h). Throws std::runtime_error.
   std::vector<std::string> Print(const AbstractFilmSession& theSession,
                                  const std::vector<const AbstractFilmBox*>& theFilmBoxes);

private:
   // Pictures of the largest sheets take 50 MB each.
   static constexpr int kMostAtATime = 4;

   std::string itsName;
   std::string itsFolder;
   PrintMemory itsMemory;
   std::counting_semaphore<kMostAtATime> itsSlots{kMostAtATime};
};
