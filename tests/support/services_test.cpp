// Wide strings, traces, files, processes and vector files.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "common/other_process.h"
#include "common/temp_folder.h"
#include "support/base/process.h"
#include "support/services/vector_file.h"
#include "support/system/atomic_file.h"
#include "support/system/file.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

TEST(Wide_String, Formats_In_Every_Locale) {
  for (const char* locale : {"C.UTF-8", "C"}) {
    std::setlocale(LC_ALL, locale);
    CMyStringW text;
    text.Format(L"%s|%5s|%-3s|%d%%|%x|%06.0f|%3.3f|%c", L"微米仪", L"厚度", L"a", -3, 255, 42.4, 1.0005, L'秒');
    EXPECT_EQ(text.Text(), L"微米仪|   厚度|a  |-3%|ff|000042|1.000|秒") << locale;
  }
  CMyStringW own = L"x";
  own.Format(L"%s%s", own.GetBuffer(), own.GetBuffer());  // its own text as an argument
  EXPECT_EQ(own.Text(), L"xx");
  const std::wstring longer(5000, L'长');
  EXPECT_EQ(Format_Text("<%s>", To_Utf8(longer).c_str()).Text(), L"<" + longer + L">");
}

TEST(Wide_String, Converts_Utf8_Both_Ways_And_Marks_What_Is_None) {
  const std::wstring all = L"\x7F\x80\x7FF\x800\xD7FF\xE000厚\xFFFF\x10000\x10FFFF";
  EXPECT_EQ(To_Utf8(all),
            "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80厚\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(From_Utf8(To_Utf8(all)), all);
  // A lone continuation and a cut sequence; the longest forms of shorter ones, surrogates, a value beyond the last.
  EXPECT_EQ(From_Utf8("\x80z\xE5\x8E"), L"\xFFFDz\xFFFD\xFFFD");
  for (const std::string none : {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                                 "\xF4\x90\x80\x80", "\xF8\x88\x80\x80"})
    EXPECT_EQ(From_Utf8(none), std::wstring(none.size(), L'\xFFFD'));
  for (const int none : {0xD800, 0xDFFF, 0x110000}) EXPECT_EQ(To_Utf8({static_cast<wchar_t>(none)}), "\xEF\xBF\xBD");
}

TEST(Trace, Writes_Whole_Lines_To_The_Stream_And_Dated_Records_To_The_Log) {
  const C_Temp_Folder folder;
  const C_Simulated_Clock clock(1);
  Sleep(3723004);
  testing::internal::CaptureStderr();
  for (const wchar_t* text : {L"厚\r\n度", L"x\n", L""}) MY_TRACE0(text);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "厚\n度\nx\n\n");
  for (const int line : {7, 8}) TraceLog2File("int F()", line, L"厚度");
  const std::string head = "2020-01-01 01:02:03.004 [" + std::to_string(getpid()) + "] int F(), line ";
  EXPECT_EQ(File_Text("orsanta_trace.log"), head + "7: 厚度\n" + head + "8: 厚度\n");
  std::filesystem::remove("orsanta_trace.log");
  ASSERT_EQ(mkfifo("orsanta_trace.log", 0600), 0);
  TraceLog2File("int F()", 9, L"nobody reads it");
}

TEST(Files, Are_Written_Whole_Or_Not_At_All) {
  const C_Temp_Folder folder;
  EXPECT_EQ(CMyFileCopy::FileExist(L"全局电机参数"), 0);
  for (const char* text : {"old", "new"}) ASSERT_EQ(Write_Atomically("全局电机参数", text, 0604), "");
  EXPECT_EQ(std::filesystem::status("全局电机参数").permissions(), std::filesystem::perms(0604));
  EXPECT_EQ(File_Text("全局电机参数"), "new");
  EXPECT_EQ(CMyFileCopy::FileExist(L"全局电机参数"), 1);
  EXPECT_EQ(CMyFileCopy::FileExist(L"."), 0) << "a folder is no file";
  std::filesystem::create_directory("taken");
  EXPECT_EQ(Write_Atomically("taken", "x", 0600), "Is a directory");
  EXPECT_EQ(Write_Atomically("missing/store", "x", 0600), "No such file or directory");
  // Nothing half written stays behind.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), std::filesystem::directory_iterator()), 2);
}

TEST(Processes, Paths_Are_Cut_At_Their_Last_Separator_And_Dot) {
  const std::wstring paths[][5] = {
      {L"/opt/ors.d/orsanta.bin.exe", L"", L"/opt/ors.d/", L"orsanta.bin", L".exe"},
      {L"D:\\设备\\Orsanta.exe", L"D:", L"\\设备\\", L"Orsanta", L".exe"},
      {L"/a.b/c", L"", L"/a.b/", L"c", L""},
      {L".hidden", L"", L"", L".hidden", L""},
      {L"C:x", L"C:", L"", L"x", L""},
  };
  for (const auto& [path, drive, dir, name, ext] : paths) {
    std::wstring parts[4];
    CMyExecuteProc::SplitPath(path.c_str(), parts[0], parts[1], parts[2], parts[3]);
    EXPECT_THAT(parts, testing::ElementsAre(drive, dir, name, ext));
  }
}

TEST(Processes, Are_Found_By_Their_Executable_And_By_The_Name_They_Were_Started_As) {
  const C_Temp_Folder folder;
  std::filesystem::copy_file("/bin/sleep", "replaced");
  CMyArray<int> ids;
  const auto count = [&ids](const wchar_t* name) {
    return CProcessAndThreadSnapShot::GetProcessIDFromProcessName(name, ids, 0);
  };
  const C_Other_Process child([] { execl("./replaced", "C:\\设备\\Orsanta_of_a_test.exe", "60", nullptr); });
  std::filesystem::remove("replaced");
  EXPECT_EQ(count(L"Orsanta_of_a_test.exe") + count(L"replaced") + count(L"no such program"), 2);
  EXPECT_THAT(std::vector<int>(ids.begin(), ids.end()), testing::ElementsAre(child.Id(), child.Id()));
}

// As GNU Octave writes such a file and NumPy reads it.
TEST(Vector_Files, Keep_Every_Bit_Under_Any_Name_And_Are_Replaced_Whole) {
  const C_Temp_Folder folder;
  const double values[] = {0.1,          -1.0 / 3.0, 5e-324,   std::numeric_limits<double>::max(), -0.0, 1e22,
                           std::nan(""), HUGE_VAL,   -HUGE_VAL};
  const struct {
    const wchar_t* name;
    int count;
    const char* file;
    const char* text;
  } files[] = {
      {L"x_data.dat", 1, "历史数据/x_data.dat",
       "# x_data.dat\n# name: x_data\n# type: matrix\n# rows: 1\n# columns: 1\n0.10000000000000001\n"},
      {L"x_data.dat", 9, "历史数据/x_data.dat",
       "# x_data.dat\n# name: x_data\n# type: matrix\n# rows: 9\n# columns: 1\n0.10000000000000001\n"
       "-0.33333333333333331\n4.9406564584124654e-324\n1.7976931348623157e+308\n-0\n1e+22\nNaN\nInf\n-Inf\n"},
      {L"Ab1 12月\n5/9\\秒\r", 1, "历史数据/Ab1 12月_5_9_秒_.txt",
       "# Ab1 12月_5_9_秒_\n# name: Ab1_12__5_9___\n# type: matrix\n# rows: 1\n# columns: 1\n0.10000000000000001\n"},
      {L"7az.txt", 0, "历史数据/7az.txt", "# 7az.txt\n# name: _7az\n# type: matrix\n# rows: 0\n# columns: 1\n"},
      {L"", 0, "历史数据/.txt", "# \n# name: _\n# type: matrix\n# rows: 0\n# columns: 1\n"},
  };
  CMatLab_Matrix_Data exporter;
  exporter.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  for (const auto& file : files) {
    EXPECT_EQ(exporter.Save_Double_Vector(values, file.count, file.name), 1);
    EXPECT_EQ(File_Text(file.file), file.text);
    EXPECT_EQ(std::filesystem::status(file.file).permissions(), std::filesystem::perms(0644));
  }
}

TEST(Vector_Files, A_Failure_Is_Shown_Once_With_File_And_Reason) {
  const C_Temp_Folder folder;
  ASSERT_EQ(Write_Atomically("历史数据", "a file where the folder should be", 0600), "");
  CMatLab_Matrix_Data exporter;
  exporter.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(exporter.Save_Double_Vector(nullptr, 0, L"y_data.dat"), 0);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[^\n]*历史数据/y_data.dat[^\n]*Not a directory[^\n]*\n"));
}

}  // namespace
}  // namespace orsanta
