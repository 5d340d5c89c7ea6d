#include "support/store/store_disk.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include "common/other_process.h"
#include "simulated_clock/simulated_clock.h"
#include "store_thing.h"
#include "support/store/store_claim.h"

namespace orsanta {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;

// Writes down each step, and lets one fail.
class C_Failing_Disk : public C_Disk {
 public:
  std::string journal;
  std::string failing;  // a step as the journal names it
  int error = 0;

  bool Fails(const std::string& step) {
    journal += step + "\n";
    return step == failing;
  }
  int Lock_Folder(int& folder) override { return Fails("lock") ? error : C_Disk::Lock_Folder(folder); }
  void Unlock_Folder(int folder) override {
    Fails("unlock");
    C_Disk::Unlock_Folder(folder);
  }
  int Read(const std::string& name, std::string& bytes) override {
    return Fails("read " + name) ? error : C_Disk::Read(name, bytes);
  }
  int Write(const std::string& name, const std::string& bytes) override {
    const int done = C_Disk::Write(name, bytes);
    return Fails("write " + name) ? error : done;  // what was written stands
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Fails("rename " + from + " " + to) ? error : C_Disk::Rename(from, to);
  }
  int Remove(const std::string& name) override { return Fails("remove " + name) ? error : C_Disk::Remove(name); }
};

class Store_Disk : public C_Store_Test {
 protected:
  Store_Disk() { Replace_Disk(std::unique_ptr<C_Disk>(disk)); }
  ~Store_Disk() override { Replace_Disk(nullptr); }

  void Let_Fail(const std::string& step, int error) {
    disk->failing = step;
    disk->error = error;
  }
  // A save that must fail with this reason and leave the folder as it is.
  void Expect_Refused(const std::string& reason) {
    const std::string before = File_Text(File);
    C_Thing changed;
    changed.force = 999.0;
    EXPECT_EQ(changed.Save(), 0);
    EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法保存" + store_name + ": " + reason),
                                  HasSubstr("\n原有的参数文件保持不变。\n排除原因后请重新保存。")));
    EXPECT_EQ(File_Text(File), before);
    EXPECT_FALSE(fs::is_regular_file(New));
  }

  static constexpr const char* New = "音圈电机3参数.new";
  static constexpr const char* Bad = "音圈电机3参数.bad";
  C_Failing_Disk* const disk = new C_Failing_Disk;
};

// At every instant one whole store stands under the name; and no save looks at the members before another one's end.
TEST_F(Store_Disk, Writes_A_New_File_And_Puts_It_In_The_Place_Of_The_Old_While_It_Holds_The_Folder) {
  ASSERT_EQ(C_Thing().Save(), 1);
  disk->journal.clear();
  C_Thing thing;
  thing.on_pass = [&] { disk->journal += "pass\n"; };
  thing.Load();
  thing.Save();
  EXPECT_EQ(disk->journal,
            "read 音圈电机3参数\npass\n"
            "lock\nread 音圈电机3参数\npass\nremove 音圈电机3参数.new\nwrite 音圈电机3参数.new\n"
            "rename 音圈电机3参数.new 音圈电机3参数\nunlock\n");
}

TEST_F(Store_Disk, Keeps_The_Old_Store_Whatever_Step_Fails) {
  ASSERT_EQ(C_Thing().Save(), 1);
  for (const char* step : {"lock", "read 音圈电机3参数", "write 音圈电机3参数.new",
                           "rename 音圈电机3参数.new 音圈电机3参数"}) {  // what cannot be read is not overwritten
    Let_Fail(step, EROFS);
    Expect_Refused("磁盘或文件夹是只读的 (Read-only file system)");
  }
  const std::pair<int, const char*> reasons[] = {
      {ENOSPC, "磁盘已满"},         {EDQUOT, "磁盘已满"},     {EACCES, "没有权限"},
      {EPERM, "没有权限"},          {ENOENT, "文件夹不存在"}, {EIO, "磁盘读写错误 (Input/output error)"},
      {9999, "磁盘读写错误 (9999)"}};
  for (const auto& [error, reason] : reasons) {
    disk->error = error;
    Expect_Refused(reason);
  }
  // A store with values that are not in use stays until a copy of it stands.
  for (const char* text : {"broken", "orsanta store 1\nC_Thing count 0 = text \"x\"\nend\n"}) {
    Write(text);
    Let_Fail("write 音圈电机3参数.bad", ENOSPC);
    C_Thing thing;
    thing.Load();
    EXPECT_THAT(Only_Box(), HasSubstr("无法写入副本 音圈电机3参数.bad: 磁盘已满"));
    EXPECT_EQ(thing.Save(), 0);
    EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法写入副本"), HasSubstr("\n无法保存")));
    EXPECT_EQ(File_Text(File), text);
    EXPECT_FALSE(fs::exists(Bad)) << "half a copy";
    Let_Fail("", 0);
    EXPECT_EQ(thing.Save(), 1);
    EXPECT_THAT(Only_Box(), HasSubstr("原文件的副本是 音圈电机3参数.bad。"));
    EXPECT_EQ(File_Text(Bad), text);
    fs::remove(Bad);
  }
}

TEST_F(Store_Disk, Writes_Nothing_That_Is_Too_Long_To_Be_Read) {
  Write("orsanta store 1\n#" + std::string(Largest_Store - 22, 'x') + "\nend\n");
  C_Thing thing;
  EXPECT_EQ(thing.Load(), 1);
  EXPECT_EQ(thing.Save(), 0) << "the comment alone leaves no room for the members";
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
  EXPECT_EQ(fs::file_size(File), Largest_Store);
  fs::resize_file(File, Largest_Store + 1);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("文件过大,超过64 MiB"));
}

TEST_F(Store_Disk, Never_Replaces_A_Store_That_It_Could_Not_Read) {
  const std::string before = "orsanta store 1\nC_Thing force 0 = double 150\nend\n";
  Write(before);
  C_Thing thing;
  Let_Fail("read 音圈电机3参数", EMFILE);
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_THAT(Only_Box(), AllOf(HasSubstr("无法读取"), HasSubstr("\n本次使用默认值。")));
  Let_Fail("", 0);
  for (thing.force = 151.0; thing.force < 153.0; ++thing.force) EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(Only_Box(), AllOf(HasSubstr("没有全部使用"), HasSubstr("音圈电机3参数.bad")));
  EXPECT_EQ(File_Text(Bad), before);
}

TEST_F(Store_Disk, Says_What_Stands_In_The_Way_On_A_Real_Disk) {
  fs::create_directory(File);
  Expect_Refused("该名称下是一个文件夹");
  fs::remove(File);
  ASSERT_EQ(mkfifo(File, 0600), 0);
  EXPECT_EQ(C_Thing().Save(), 0);
  EXPECT_THAT(Only_Box(), HasSubstr("不是普通文件"));
  fs::remove(File);
  ASSERT_EQ(C_Thing().Save(), 1);
  fs::create_directory(New);
  Expect_Refused("同名的 .new 文件夹占用了名称");
  fs::remove(New);
  std::ofstream(New) << "what a killed program has left";
  ASSERT_EQ(C_Thing().Save(), 1);
  const auto with_fewer_rights = [this] {
    const rlimit no_more{64, 64};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &no_more), 0);
    Expect_Refused("文件过大");
    fs::permissions(folder.Path(), static_cast<fs::perms>(0555));
    fs::permissions(File, static_cast<fs::perms>(0444));
    EXPECT_TRUE(geteuid() != 0 || setuid(65534) == 0);  // as nobody: rights do not bind the superuser
    Expect_Refused("没有权限");
    return HasFailure() ? 1 : 0;
  };
  EXPECT_EQ(Exit_Status_Of(with_fewer_rights), 0);
  fs::permissions(folder.Path(), fs::perms::owner_all);

  // Another program that does not give the folder back holds up no load.
  const C_Simulated_Clock clock(1);
  int held = -1;
  ASSERT_EQ(C_Disk().Lock_Folder(held), 0);
  EXPECT_EQ(C_Thing().Load(), 1);
  EXPECT_EQ(Now_Ms(), 0.0);
  Expect_Refused("文件夹被另一个程序占用");
  EXPECT_EQ(Now_Ms(), 5000.0);
  C_Disk().Unlock_Folder(held);
  EXPECT_EQ(C_Thing().Save(), 1);
}

class Store_Claim : public C_Store_Test {};

TEST_F(Store_Claim, Is_Refused_Until_The_Owner_Has_Ended) {
  C_Other_Process other([] { (new C_Thing)->Own(); });
  auto first = std::make_unique<C_Thing>();
  EXPECT_EQ(first->Own(), 0);
  EXPECT_EQ(Only_Box(), store_name + " 正由进程 " + std::to_string(other.Id()) +
                            " (test_support)使用。本程序照常测量,但在它退出之前不保存这个文件。请只运行一个程序,"
                            "或让各程序使用不同的工位或不同的文件夹。");
  other.Kill();
  EXPECT_EQ(first->Own(), 1);

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
  EXPECT_FALSE(std::filesystem::exists("音圈电机3参数.lock"));
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
  EXPECT_FALSE(std::filesystem::exists("音圈电机3参数.lock"));
}

TEST_F(Store_Claim, Where_Nobody_Can_Tell_The_Store_Is_Free) {
  std::filesystem::create_directory("音圈电机3参数.lock");
  EXPECT_EQ(C_Store_Claim().Take(File), 0);
}

}  // namespace
}  // namespace orsanta
