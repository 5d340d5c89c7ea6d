#include "support/store_claim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <atomic>
#include <filesystem>
#include <optional>

#include "common/other_process.h"
#include "store_thing.h"

namespace orsanta {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr const char* Lock = "音圈电机3参数.lock";

class Store_Claim : public C_Store_Test {};

TEST_F(Store_Claim, Refuses_Saves_Until_The_Owner_Has_Ended) {
  ASSERT_EQ(C_Thing().Save(), 1);
  const std::string before = File_Text(File);
  C_Other_Process other([] { (new C_Thing)->Own(); });
  auto first = std::make_optional<C_Thing>();
  C_Thing& thing = *first;
  const auto told = AllOf(
      HasSubstr((folder.Path() / File).string() + " 正由进程 " + std::to_string(other.Id()) + " (test_support)使用"),
      HasSubstr("不保存"));
  EXPECT_EQ(thing.Own(), 0);
  EXPECT_THAT(Only_Box(), told);
  EXPECT_EQ(thing.Load(), 1);
  for (int i = 0; i < 2; ++i) {
    thing.count = 7;
    EXPECT_EQ(thing.Save(), 0);
    EXPECT_THAT(Only_Box(), told);
    EXPECT_EQ(File_Text(File), before);
  }
  C_Store_Claim neighbour;
  EXPECT_EQ(neighbour.Take("音圈电机4参数"), 0);
  other.Kill();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(File_Text(File), HasSubstr("count 0 = int 7\n"));

  // Within a process the store belongs to all, until the last of them is gone.
  auto second = std::make_optional<C_Thing>();
  EXPECT_EQ(second->Own(), 1);
  const auto owner_told_to_another = [] {
    return Exit_Status_Of([] { return C_Store_Claim().Take(File) == getppid() ? 1 : 0; });
  };
  EXPECT_EQ(owner_told_to_another(), 1);
  second.reset();
  EXPECT_EQ(owner_told_to_another(), 1);
  // A child that ends what it has inherited gives nothing back.
  EXPECT_EQ(Exit_Status_Of([&] { return (first.reset(), C_Store_Claim().Take(File) == getppid() ? 1 : 0); }), 1);
  EXPECT_TRUE(front->Shown().empty());
  first.reset();
  EXPECT_FALSE(std::filesystem::exists(Lock));
}

// The file goes with every claim: one that another process has just opened must not count then.
TEST_F(Store_Claim, Has_One_Owner_Among_Many_That_Come_And_Go) {
  struct C_Shared {
    std::atomic<int> owners, taken, doubled;
  };
  void* memory = mmap(nullptr, sizeof(C_Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  auto& shared = *new (memory) C_Shared{};
  {
    const auto come_and_go = [&] {
      for (int i = 0; i < 1500; ++i) {
        C_Store_Claim claim;
        if (claim.Take(File) != 0) continue;
        shared.taken += 1;
        if (shared.owners.fetch_add(1) != 0) shared.doubled += 1;
        usleep(20);
        shared.owners -= 1;
      }
    };
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) {
      children.push_back(fork());
      if (children.back() != 0) continue;
      come_and_go();
      _exit(0);
    }
    for (const pid_t child : children) waitpid(child, nullptr, 0);
  }
  EXPECT_EQ(shared.doubled, 0);
  EXPECT_GT(shared.taken, 100);
  EXPECT_FALSE(std::filesystem::exists(Lock));
  munmap(memory, sizeof(C_Shared));
}

TEST_F(Store_Claim, Where_Nobody_Can_Tell_The_Store_Is_Free) {
  std::filesystem::create_directory(Lock);
  C_Thing thing;
  EXPECT_EQ(thing.Own(), 1);
  EXPECT_EQ(thing.Save(), 1);
}

}  // namespace
}  // namespace orsanta
