#include "talvenor/ul/UserInformationItem.h"

#include <tuple>

#include "talvenor/ul/ULItemBodies.h"

constinit std::atomic<int> UserInformationItem::itsOthersArePassedOver = 0;

bool UserInformationItem::operator==(const UserInformationItem& theOther) const
{
   return std::tie(itsMax, itsClass, itsVersion, itsRoles) ==
          std::tie(theOther.itsMax, theOther.itsClass, theOther.itsVersion, theOther.itsRoles);
}

void UserInformationItem::AddSCPSCURole(const SCPSCURoleSelectSubItem& theItem)
{
   if (!ContainsSCPSCURole(theItem))
   {
      itsRoles.push_back(theItem);
   }
}

SCPSCURoleSelectSubItem* UserInformationItem::GetSCPSCURole(const SCPSCURoleSelectSubItem& theItem) const
{
   const auto aFound =
       std::find_if(itsRoles.begin(), itsRoles.end(), [&](const auto& theRole) { return *theRole == theItem; });
   return aFound != itsRoles.end() ? aFound->get() : nullptr;
}

// As it is written; reading, which takes any order, is below.
template <class Self, class Visitor>
int UserInformationItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.SubItem(theItem.itsMax) && theVisitor.SubItem(theItem.itsClass) &&
          theVisitor.SubItem(theItem.itsVersion) &&
          theVisitor.Ignored("Ignored Subitems Length", theItem.itsIgnoredLength) &&
          theVisitor.Members(theItem.itsRoles);
}

int UserInformationItem::Fields(UserInformationItem& theItem, FieldReader& theReader)
{
   using Owner = UserInformationItem;
   constexpr auto kPassOver = [](Owner& theOwner, PDUInputStream& theStream, unsigned int&) {
      return theOwner.ReadIgnored(theStream);
   };
   static constexpr SubItemRow<Owner> kRows[] = {
       {0x51, [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsMax.ReadDynamic(s, n); },
        "::ReadDynamic: EOF while reading itsMaximumLengthSubItem"},
       {0x52, [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsClass.ReadDynamic(s, n); },
        "::ReadDynamic: EOF while reading ImplementationClassUIDSubItem"},
       {0x53, kPassOver, "::ReadDynamic: EOF while reading AsynchronousOperationsWindow subitem"},
       {0x54,
        [](Owner& o, PDUInputStream& s, unsigned int& n) {
           o.itsRoles.push_back(std::make_unique<SCPSCURoleSelectSubItem>());
           return o.itsRoles[o.itsRoles.size() - 1]->ReadDynamic(s, n);
        },
        "::ReadDynamic: EOF while reading SCPSCURoleSelectSubItem"},
       {0x55, [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsVersion.ReadDynamic(s, n); },
        "::ReadDynamic: EOF while reading ImplementationVersionNameSubItem subitem"},
       {0x56, kPassOver, "::ReadDynamic: EOF while reading ExtendedSOPClassNegotiation subitem"},
   };
   static constexpr SubItemRow<Owner> kOthers = {0, kPassOver, "::ReadDynamic: EOF while reading an unknown subitem"};
   constexpr SubItemTexts kTexts = {"::ReadDynamic: EOF while reading subitem type",
                                    "::ReadDynamic: unknown subitem received", true};

   // Nothing of an earlier item stays, in particular no role.
   const UINT16 aLength = theItem.itsItemLength;
   theItem = UserInformationItem();
   theItem.itsItemLength = aLength;
   return theReader.SubItemsByType(theItem, kRows, kTexts, GetOthersPassedOver() ? &kOthers : nullptr);
}

// The reserved byte, the length and the body of a sub-item that is not looked at.
int UserInformationItem::ReadIgnored(PDUInputStream& theStream)
{
   unsigned char aReserved = 0;
   UINT16 aLength = 0;
   if (theStream.DULRead(aReserved) != sizeof aReserved || theStream.DULRead(aLength) != sizeof aLength ||
       theStream.Skip(aLength) != aLength)
   {
      return 0;
   }
   itsIgnoredLength += static_cast<UINT32>(sizeof aReserved + sizeof aLength + aLength);
   return 1;
}

template class ULItem<UserInformationItem>;
