// The report and the dump of real processes that end by a failed check.
#include "support/assertion.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common/temp_folder.h"
#include "support/array.h"
#include "support/thread.h"

namespace orsanta {
namespace {

using testing::HasSubstr;

__attribute__((noinline)) int Fail_In_The_Middle(const CMyArray<int>& array) {
  const std::string to_unwind(100, 'x');  // leaving this frame runs a destructor
  return array.GetAt(5) + static_cast<int>(to_unwind.size());
}

__attribute__((noinline)) int Fail_Without_A_Way_Out() noexcept {
  return Fail_In_The_Middle(CMyArray<int>()) + 1;
}

void Fail_On_A_Thread() {
  C_Thread thread;
  thread.Start("failing", [] { Fail_In_The_Middle(CMyArray<int>()); });
  thread.Join();
}

// Describing it for the dump fails too.
struct C_Failing_Description : std::exception {
  const char* what() const noexcept override { std::terminate(); }
};

std::vector<std::string> Dumps() {
  std::vector<std::string> contents;
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    if (entry.path().extension() != ".dmp") continue;
    EXPECT_THAT(entry.path().filename().string(), testing::MatchesRegex("test_support_[0-9]+_[0-9]+_[0-9]+[.]dmp"));
    std::ifstream file(entry.path());
    contents.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return contents;
}

class C_Assertion : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "fast"); }  // the child keeps the working directory

  void Expect_Whole_Dump() {
    const std::vector<std::string> dumps = Dumps();
    ASSERT_EQ(dumps.size(), 1U);
    const std::string& dump = dumps[0];
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    EXPECT_THAT(dump, HasSubstr("\npath: " + program + "\nmodule: test_support\nfunc: "));
    EXPECT_THAT(dump, HasSubstr("CMyArray<T>::GetAt(int64_t) const [with T = int"));
    const std::string tail =
        "\n\n--------------\n\n发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
        "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to developer.\n";
    EXPECT_THAT(dump, HasSubstr(tail));
    // The frames of the failure, though they are hidden from the dynamic linker and were left before the process ended.
    EXPECT_THAT(dump.substr(dump.find("\nstack of thread ")),
                HasSubstr("Fail_In_The_Middle(orsanta::CMyArray<int> const&)"));
    EXPECT_THAT(dump, testing::ContainsRegex("\nmodules:\n(.*\n)*.*/libc[.]so"));
    std::ifstream log("orsanta_trace.log");
    const std::string record((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    EXPECT_THAT(record, testing::AllOf(HasSubstr("GetAt"), HasSubstr("please send an image")));
  }

  C_Temp_Folder m_Folder;
};

using C_AssertionDeathTest = C_Assertion;

TEST_F(C_AssertionDeathTest, ThroughAFunctionThatThrowsNothing) {
  EXPECT_EXIT(Fail_Without_A_Way_Out(), testing::ExitedWithCode(CVCDumpMessage::Exit_Status),
              "please send an image.*\n.*dump: test_support_.*dmp");
  Expect_Whole_Dump();
}

TEST_F(C_AssertionDeathTest, OnAThread) {
  EXPECT_EXIT(Fail_On_A_Thread(), testing::ExitedWithCode(CVCDumpMessage::Exit_Status), "please send an image");
  Expect_Whole_Dump();
}

TEST_F(C_AssertionDeathTest, OfTwoThreadsTheFirstReportStands) {
  const auto fail_on_two = [] {
    C_Thread thread;
    thread.Start("also failing", [] { Fail_In_The_Middle(CMyArray<int>()); });
    Fail_Without_A_Way_Out();
  };
  EXPECT_EXIT(fail_on_two(), testing::ExitedWithCode(CVCDumpMessage::Exit_Status), "");
  Expect_Whole_Dump();
}

TEST_F(C_AssertionDeathTest, WithoutAWritableFolderTheDumpGoesToTheTemporaryOne) {
  const C_Temp_Folder lost;
  const auto fail_in_a_lost_folder = [this, &lost] {
    setenv("TMPDIR", m_Folder.Path().c_str(), 1);
    std::filesystem::remove_all(lost.Path());
    Fail_Without_A_Way_Out();
  };
  EXPECT_EXIT(fail_in_a_lost_folder(), testing::ExitedWithCode(CVCDumpMessage::Exit_Status),
              "dump: " + m_Folder.Path().string());
}

TEST_F(C_AssertionDeathTest, AFailureInsideTheHandlerEndsAtOnce) {
  const auto fail_twice = [] {
    std::set_terminate(&CVCDumpMessage::DumpFileProcess);
    C_Thread thread;
    thread.Start("failing", [] { throw C_Failing_Description(); });
    thread.Join();
  };
  EXPECT_EXIT(fail_twice(), testing::ExitedWithCode(CVCDumpMessage::Exit_Status), "");
}

TEST_F(C_Assertion, TheTextOfTheProgramAndOfTheFailureOpenTheReport) {
  cMyAssertAppendDispInfo() = "for all reports";
  EXPECT_THROW(MY_ASSERT_REPORT("what failed"), CMy_Assert_Exception);
  cMyAssertAppendDispInfo().clear();
  EXPECT_THAT(CVCDumpMessage::m_cErrorMsg(),
              testing::ContainsRegex("^what failed\nfor all reports\n[A-Z][a-z][a-z] [ 1-3][0-9] 20[0-9][0-9] "
                                     "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\npath: /"));
}

}  // namespace
}  // namespace orsanta
