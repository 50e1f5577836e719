// The sub-items of user information that have fields of their own.
#include "talvenor/ul/ImplementationVersionNameSubItem.h"
#include "talvenor/ul/MaximumLengthSubItem.h"
#include "talvenor/ul/SCPSCURoleSelectSubItem.h"
#include "talvenor/ul/ULItemBodies.h"

// PS3.8 D.1.
template <class Self, class Visitor>
int MaximumLengthSubItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.Number("Maximum PDU Length", theItem.itsMaximumLength);
}

// PS3.7 D.3.3.2.3.
template <class Self, class Visitor>
int ImplementationVersionNameSubItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.Name("Implementation Version", theItem.itsVersion);
}

namespace
{
const char* RoleText(unsigned char theRole)
{
   return theRole == 1 ? "Proposed/Accepted" : "Not Proposed/Rejected";
}
} // namespace

// PS3.7 D.3.3.4.
template <class Self, class Visitor>
int SCPSCURoleSelectSubItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.CountedUID("SOP Class", theItem.itsUID) &&
          theVisitor.Coded("SCU Role", theItem.itsSCURole, RoleText(theItem.itsSCURole)) &&
          theVisitor.Coded("SCP Role", theItem.itsSCPRole, RoleText(theItem.itsSCPRole));
}

template class ULItem<MaximumLengthSubItem>;
template class ULItem<ImplementationVersionNameSubItem>;
template class ULItem<SCPSCURoleSelectSubItem>;
