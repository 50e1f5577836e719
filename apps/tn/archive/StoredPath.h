// Where a stored instance has its place. Nothing else makes the name of a file in an archive:
//
//    1.2.3/1.2.3.4/1.2.3.4.5.dcm           study, series, instance
//    no-study/1.2.840.10008.5.1.4.38.1/1.2.3.4.5.dcm    SOP class, instance: a hanging protocol, a palette, ...
//
// The names are the UIDs themselves, never changed: two instances never share a name, and a UID that is none (PS3.5
// 9.1) makes no name. One has digits and full stops only, so that a path leads nowhere but down; "no-study" can be no
// UID.
#pragma once

#include <string>
#include <string_view>

class InstanceKeys;

class StoredPath
{
public:
   // Whether the text is a UID: 1 to 64 characters, numbers with full stops between them, none with a needless 0 at its
   // front. One that begins with 0, 1 or 2 as the standard demands is not asked for: it is as unique as another.
   static bool IsUID(std::string_view theText);

   // Of an instance. One without study and series has a path only if its SOP class is one that knows none (or is not
   // known at all). Throw std::invalid_argument, which names what is no UID.
   static StoredPath Of(const InstanceKeys& theKeys);
   static StoredPath OfStudy(const std::string& theStudy, const std::string& theSeries, const std::string& theInstance);
   static StoredPath WithoutStudy(const std::string& theSOPClass, const std::string& theInstance);

   // From the folder of the archive on. The folder is two names, the second below the first.
   const std::string& GetUpperFolder() const { return itsUpper; }
   const std::string& GetLowerFolder() const { return itsLower; }
   const std::string& GetFile() const { return itsFile; }
   std::string GetFolder() const { return itsUpper + "/" + itsLower; }
   std::string GetText() const { return GetFolder() + "/" + itsFile; }

private:
   StoredPath(std::string theUpper, std::string theLower, const std::string& theInstance)
       : itsUpper(std::move(theUpper)), itsLower(std::move(theLower)), itsFile(theInstance + ".dcm")
   {}

   std::string itsUpper;
   std::string itsLower;
   std::string itsFile;
};
