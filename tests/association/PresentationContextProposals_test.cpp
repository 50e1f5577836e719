#include "talvenor/association/PresentationContextProposals.h"

#include <gtest/gtest.h>

#include <memory>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/ul/AAssociateRQPDU.h"
#include "tests/support/MessageOf.h"

namespace
{

using List = PresentationContextProposals::TransferSyntaxList;

constexpr const char* kCTImageStorage = "1.2.840.10008.5.1.4.1.1.2";

} // namespace

TEST(PresentationContextProposals, EachDifferentListBecomesAContextOfTheRequest)
{
   PresentationContextProposals aProposals(kCTImageStorage);
   aProposals.AddTransferSyntaxList(new List{"1.2.3", "1.2.4"});
   aProposals.AddTransferSyntaxList(new List{"1.2.4", "1.2.3"});
   aProposals.AddTransferSyntaxList(new List{"1.2.5"});
   aProposals.AddTransferSyntaxList(new List{"1.2.3", "1.2.4"}); // held already
   EXPECT_EQ(aProposals.GetPresentationContextCount(), 3u);

   AAssociateRQPDU aRequest;
   aProposals.AddToRequest(aRequest);
   ASSERT_EQ(aRequest.GetPresentationContextCount(), 3u);
   for (const unsigned char anID : {1, 3, 5})
   {
      const PresentationContextItem* const anItem = aRequest.GetPresentationContextItem(anID);
      ASSERT_NE(anItem, nullptr) << int{anID};
      EXPECT_TRUE(anItem->GetAbstractSyntax().GetName() == kCTImageStorage) << int{anID};
      List aList;
      for (const auto& anEntry : anItem->GetTransferSyntaxList())
      {
         aList.push_back(anEntry->GetUID().ToString());
      }
      EXPECT_EQ(aList, aProposals.GetTransferSyntaxLists()[(anID - 1u) / 2]) << int{anID};
   }
}

TEST(PresentationContextProposals, ARequestIsFilledUpTo128Contexts)
{
   PresentationContextProposals aProposals(kCTImageStorage);
   for (int i = 0; i < 100; ++i)
   {
      aProposals.AddTransferSyntax("1.2." + std::to_string(i));
   }
   AAssociateRQPDU aRequest;
   aProposals.AddToRequest(aRequest);
   aProposals.AddToRequest(aRequest);
   EXPECT_EQ(aRequest.GetPresentationContextCount(), 128u);
}

TEST(PresentationContextProposals, ListsAreFoundAndRemovedByTheirContents)
{
   PresentationContextProposals aProposals(kCTImageStorage);
   aProposals.AddTransferSyntaxList(new List{"1.2.3", "1.2.4"});
   aProposals.AddTransferSyntax("1.2.5");
   EXPECT_TRUE(aProposals.ContainsTransferSyntax("1.2.4"));
   EXPECT_FALSE(aProposals.ContainsTransferSyntaxList({"1.2.4"}));
   EXPECT_EQ(aProposals.RemoveTransferSyntaxList({"1.2.4", "1.2.3"}), nullptr);
   const std::unique_ptr<List> aRemoved(aProposals.RemoveTransferSyntaxList({"1.2.3", "1.2.4"}));
   ASSERT_NE(aRemoved, nullptr);
   EXPECT_EQ(*aRemoved, (List{"1.2.3", "1.2.4"}));
   EXPECT_EQ(aProposals.GetTransferSyntaxLists(), std::vector<List>{{"1.2.5"}});
   EXPECT_EQ(MessageOf<TNRuntimeException>([&] { aProposals.AddTransferSyntaxList(nullptr); }),
             "PresentationContextProposals: error: AddTransferSyntaxList(null) attempted");
}
