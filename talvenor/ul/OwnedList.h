// An ordered list that owns its members, one allocation each, so that a pointer to a member stays good while the list
// grows. Copies are deep; lists are equal when their members are, in order.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

template <class T>
class OwnedList
{
public:
   OwnedList() = default;
   OwnedList(const OwnedList& theOther)
   {
      itsMembers.reserve(theOther.size());
      for (const auto& aMember : theOther)
      {
         push_back(*aMember);
      }
   }
   OwnedList(OwnedList&& theOther) noexcept = default;
   OwnedList& operator=(OwnedList theOther) noexcept
   {
      itsMembers.swap(theOther.itsMembers);
      return *this;
   }

   bool operator==(const OwnedList& theOther) const
   {
      return std::equal(begin(), end(), theOther.begin(), theOther.end(),
                        [](const auto& theOne, const auto& theTwo) { return *theOne == *theTwo; });
   }

   std::size_t size() const { return itsMembers.size(); }
   bool empty() const { return itsMembers.empty(); }

   // The members as pointers that are never null: for (const auto& aMember : aList) aMember->...
   auto begin() const { return itsMembers.cbegin(); }
   auto end() const { return itsMembers.cend(); }
   T* operator[](std::size_t theIndex) const { return itsMembers[theIndex].get(); }

   void push_back(const T& theMember) { itsMembers.push_back(std::make_unique<T>(theMember)); }
   void push_back(std::unique_ptr<T> theMember) { itsMembers.push_back(std::move(theMember)); }
   void clear() { itsMembers.clear(); }

private:
   std::vector<std::unique_ptr<T>> itsMembers;
};
