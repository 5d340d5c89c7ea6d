// The report and the dump of real processes that end by a failed check.
#include "support/assertion.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "common/temp_folder.h"
#include "support/array.h"
#include "support/thread.h"

namespace orsanta {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

__attribute__((noinline)) int Fail_In_The_Middle(const CMyArray<int>& array) {
  const std::string to_unwind(100, 'x');  // leaving this frame runs a destructor
  return array.GetAt(5) + static_cast<int>(to_unwind.size());
}

__attribute__((noinline)) int Fail_Without_A_Way_Out() noexcept {
  return Fail_In_The_Middle(CMyArray<int>()) + 1;
}

void Fail_On_Two_Threads() {
  C_Thread thread;
  thread.Start("failing", [] { Fail_In_The_Middle(CMyArray<int>()); });
  Fail_Without_A_Way_Out();
}

// Describing it for the dump fails too.
struct C_Failing_Description : std::exception {
  const char* what() const noexcept override { std::terminate(); }
};

// The one dump of the working directory, whole.
void Expect_Whole_Dump() {
  std::vector<std::filesystem::path> dumps;
  for (const auto& entry : std::filesystem::directory_iterator("."))
    if (entry.path().extension() == ".dmp") dumps.push_back(entry.path());
  ASSERT_EQ(dumps.size(), 1U);
  EXPECT_THAT(dumps[0].filename(), testing::MatchesRegex("test_support_[0-9]+_[0-9]+_[0-9]+[.]dmp"));
  const std::string dump = File_Text(dumps[0]);
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  EXPECT_THAT(dump, HasSubstr("\npath: " + program + "\nmodule: test_support\nfunc: "));
  EXPECT_THAT(dump, ContainsRegex("\nfunc: .*CMyArray<.*>::GetAt[(]int64_t[)] const [[].*T = int"));
  EXPECT_THAT(dump,
              HasSubstr("\n\n--------------\n\n发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
                        "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to "
                        "developer.\n"));
  // The frames of the failure, though they are hidden from the dynamic linker and were left before the process ended.
  EXPECT_THAT(dump.substr(dump.find("\nstack of thread ")),
              HasSubstr("Fail_In_The_Middle(orsanta::CMyArray<int> const&)"));
  EXPECT_THAT(dump, ContainsRegex("\nmodules:\n(.*\n)*.*/libc[.]so"));
  EXPECT_THAT(File_Text("orsanta_trace.log"), testing::AllOf(HasSubstr("GetAt"), HasSubstr("please send an image")));
}

const auto Ends = testing::ExitedWithCode(CVCDumpMessage::Exit_Status);

class C_AssertionDeathTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "fast"); }  // the child keeps the working directory
};

TEST_F(C_AssertionDeathTest, AFailureLeavesOneWholeDumpEvenOnTwoThreadsAtOnce) {
  for (const bool two_threads : {false, true}) {
    const C_Temp_Folder folder;
    EXPECT_EXIT(two_threads ? Fail_On_Two_Threads() : void(Fail_Without_A_Way_Out()), Ends, "please send an image");
    Expect_Whole_Dump();
  }
}

TEST_F(C_AssertionDeathTest, EndsWithoutAWritableFolderAndWhenTheHandlerFails) {
  const C_Temp_Folder other, lost;
  const auto fail_in_a_lost_folder = [&] {
    setenv("TMPDIR", other.Path().c_str(), 1);
    std::filesystem::remove_all(lost.Path());
    Fail_Without_A_Way_Out();
  };
  EXPECT_EXIT(fail_in_a_lost_folder(), Ends, "dump: " + other.Path().string());
  const auto fail_twice = [] {
    std::set_terminate(&CVCDumpMessage::DumpFileProcess);
    C_Thread thread;
    thread.Start("failing", [] { throw C_Failing_Description(); });
    thread.Join();
  };
  EXPECT_EXIT(fail_twice(), Ends, "");
}

TEST(C_Assertion, TheTextOfTheProgramAndOfTheFailureOpenTheReport) {
  const C_Temp_Folder folder;
  cMyAssertAppendDispInfo() = "for all reports";
  EXPECT_THROW(MY_ASSERT_REPORT("what failed"), CMy_Assert_Exception);
  cMyAssertAppendDispInfo().clear();
  EXPECT_THAT(CVCDumpMessage::m_cErrorMsg(),
              ContainsRegex("^what failed\nfor all reports\n[A-Z][a-z][a-z] [ 1-3][0-9] 20[0-9][0-9] "
                            "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\npath: /"));
}

}  // namespace
}  // namespace orsanta
