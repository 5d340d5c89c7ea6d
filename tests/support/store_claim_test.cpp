#include "support/store/store_claim.h"

#include <fcntl.h>

#include "common/other_process.h"
#include "store_thing.h"

namespace orsanta {
namespace {

constexpr const char* Lock = "音圈电机3参数.lock";

class Store_Claim : public C_Store_Test {};

TEST_F(Store_Claim, Refuses_Saves_Until_The_Owner_Has_Ended) {
  C_Other_Process other([] { (new C_Thing)->Own(); });
  auto first = std::make_unique<C_Thing>();
  EXPECT_EQ(first->Own(), 0);
  EXPECT_EQ(Only_Box(), store_name + " 正由进程 " + std::to_string(other.Id()) +
                            " (test_support)使用。本程序照常测量,但在它退出之前不保存这个文件。请只运行一个程序,"
                            "或让各程序使用不同的工位或不同的文件夹。");
  EXPECT_EQ(first->Save(), 0);
  EXPECT_FALSE(std::filesystem::exists(File));
  other.Kill();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(first->Save(), 1);
  EXPECT_EQ(front->Boxes().size(), 1U) << "of the refused save";

  // Within a process the store belongs to all, until the last of them is gone; a child that ends what it has inherited
  // gives nothing back.
  auto second = std::make_unique<C_Thing>();
  EXPECT_EQ(second->Own(), 1);
  const auto owner_told_to_another = [] { return C_Store_Claim().Take(File) == getppid() ? 1 : 0; };
  EXPECT_EQ(Exit_Status_Of(owner_told_to_another), 1);
  second.reset();
  EXPECT_EQ(Exit_Status_Of(owner_told_to_another), 1);
  EXPECT_EQ(Exit_Status_Of([&] { return (first.reset(), owner_told_to_another()); }), 1);
  first.reset();
  EXPECT_FALSE(std::filesystem::exists(Lock));
}

// The file goes with every claim: one that another process has just opened must not count then.
TEST_F(Store_Claim, Has_One_Owner_Among_Many_That_Come_And_Go) {
  const auto come_and_go = [] {
    for (int split = 0; split < 2; ++split) fork();  // four processes from here on
    for (int taken = 0; taken < 300;) {
      C_Store_Claim claim;
      if (claim.Take(File) != 0) continue;
      ++taken;
      const int mark = open("owned", O_CREAT | O_EXCL, 0600);
      usleep(20);
      if (close(mark) != 0 || unlink("owned") != 0) return 1;  // by another owner
    }
    for (int status = 0; wait(&status) > 0;)
      if (status != 0) return 1;
    return 0;
  };
  EXPECT_EQ(Exit_Status_Of(come_and_go), 0) << "two owners at once";
  EXPECT_FALSE(std::filesystem::exists(Lock));
}

TEST_F(Store_Claim, Where_Nobody_Can_Tell_The_Store_Is_Free) {
  std::filesystem::create_directory(Lock);
  C_Thing thing;
  EXPECT_EQ(thing.Own(), 1);
  EXPECT_EQ(thing.Save(), 1);
}

}  // namespace
}  // namespace orsanta
