// Wide strings, traces, files, processes and vector files.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "common/temp_folder.h"
#include "support/clock.h"
#include "support/file.h"
#include "support/process.h"
#include "support/trace.h"
#include "support/vector_file.h"
#include "support/whole_file.h"
#include "support/wide_string.h"

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
  EXPECT_EQ(Format_Text(L"<%s>", longer.c_str()).Text(), L"<" + longer + L">");
}

TEST(Wide_String, Converts_Utf8_Both_Ways_And_Marks_What_Is_None) {
  const std::wstring all = L"aé厚\U0001F600";
  EXPECT_EQ(To_Utf8(all), "a\xC3\xA9\xE5\x8E\x9A\xF0\x9F\x98\x80");
  EXPECT_EQ(From_Utf8(To_Utf8(all)), all);
  // A lone continuation and a cut sequence, an overlong zero, a surrogate, a value beyond the last.
  EXPECT_EQ(From_Utf8("\x80z\xE5\x8E"), L"\xFFFDz\xFFFD\xFFFD");
  for (const std::string none : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
    EXPECT_EQ(From_Utf8(none), std::wstring(none.size(), L'\xFFFD'));
  EXPECT_EQ(To_Utf8({static_cast<wchar_t>(0xD800)}), "\xEF\xBF\xBD");
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
  for (const char* text : {"old", "new"}) ASSERT_EQ(Write_Whole_File("全局电机参数", text, 0604), "");
  EXPECT_EQ(std::filesystem::status("全局电机参数").permissions(), std::filesystem::perms(0604));
  EXPECT_EQ(File_Text("全局电机参数"), "new");
  EXPECT_EQ(CMyFileCopy::FileExist(L"全局电机参数"), 1);
  EXPECT_EQ(CMyFileCopy::FileExist(L"."), 0) << "a folder is no file";
  std::filesystem::create_directory("taken");
  for (const char* name : {"taken", "missing/store"}) EXPECT_NE(Write_Whole_File(name, "x", 0600), "");
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
  CMyArray<int> ids;
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sleep", "C:\\设备\\Orsanta_of_a_test.exe", "60", nullptr);
    _exit(127);
  }
  for (int waited_ms = 0; waited_ms < 10000 && ids.GetSize() == 0; ++waited_ms) {
    usleep(1000);
    CProcessAndThreadSnapShot::GetProcessIDFromProcessName(L"Orsanta_of_a_test.exe", ids, 0);
  }
  EXPECT_THAT(std::vector<int>(ids.begin(), ids.end()), testing::ElementsAre(child));
  EXPECT_GE(CProcessAndThreadSnapShot::GetProcessIDFromProcessName(L"sleep", ids, 0), 1) << "by its executable";
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(CProcessAndThreadSnapShot::GetProcessIDFromProcessName(L"Orsanta_of_a_test.exe", ids, 0), 0);
}

TEST(Vector_Files, Keep_Every_Bit_And_Are_Replaced_Whole) {
  const C_Temp_Folder folder;
  const double values[] = {0.1, -1.0 / 3.0, 5e-324, std::numeric_limits<double>::max(), -0.0, 1e22};
  CMatLab_Matrix_Data exporter;
  exporter.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  ASSERT_EQ(exporter.Save_Double_Vector(values, 1, L"x_data.dat"), 1);
  ASSERT_EQ(exporter.Save_Double_Vector(values, 6, L"x_data.dat"), 1);
  EXPECT_EQ(std::filesystem::status("历史数据/x_data.dat").permissions(), std::filesystem::perms(0644));
  const std::string text = File_Text("历史数据/x_data.dat");
  const std::string head = "# x_data.dat\n# name: x_data\n# type: matrix\n# rows: 6\n# columns: 1\n";
  ASSERT_EQ(text.substr(0, head.size()), head);
  const char* at = text.c_str() + head.size();
  for (const double value : values) {
    char* end = nullptr;
    EXPECT_EQ(std::bit_cast<uint64_t>(std::strtod(at, &end)), std::bit_cast<uint64_t>(value));
    at = end;
  }
  EXPECT_STREQ(at, "\n");
}

TEST(Vector_Files, Load_In_Octave_And_Numpy_Under_Any_Name) {
  const C_Temp_Folder folder;
  const double values[] = {1.5, std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                           std::nan("")};
  CMatLab_Matrix_Data exporter;
  ASSERT_EQ(exporter.Save_Double_Vector(values, 4, L"ThicknessArray1 12月15日16时5分9秒"), 1);
  ASSERT_EQ(exporter.Save_Double_Vector(values, 0, L"7/空"), 1);
  const std::string file = "ThicknessArray1 12月15日16时5分9秒.txt";
  EXPECT_THAT(File_Text(file), testing::EndsWith("# columns: 1\n1.5\nInf\n-Inf\nNaN\n"));
  EXPECT_THAT(File_Text("7_空.txt"), testing::HasSubstr("# name: _7__\n"));
  const std::string octave = "octave-cli --norc --quiet --eval \"a = struct2cell(load('" + file +
                             "')); b = struct2cell(load('7_空.txt')); "
                             "exit(!(isequaln(a{1}, [1.5; Inf; -Inf; NaN]) && isempty(b{1})))\"";
  const std::string numpy = "/usr/bin/python3 -c \"import numpy as n; a = n.loadtxt('" + file +
                            "'); assert n.array_equal(a, [1.5, n.inf, -n.inf, n.nan], equal_nan=True); "
                            "assert n.loadtxt('7_空.txt').size == 0\"";
  const auto runs = [](const std::string& command) { return std::system((command + " > said.txt 2>&1").c_str()) == 0; };
  const bool has_octave = runs("octave-cli --version"), has_numpy = runs("/usr/bin/python3 -c 'import numpy'");
  EXPECT_TRUE(!has_octave || runs(octave)) << File_Text("said.txt");
  EXPECT_TRUE(!has_numpy || runs(numpy)) << File_Text("said.txt");
  if (!has_octave && !has_numpy) GTEST_SKIP() << "neither Octave nor NumPy is installed: the files were not loaded";
}

TEST(Vector_Files, A_Failure_Is_Shown_Once_With_File_And_Reason) {
  const C_Temp_Folder folder;
  ASSERT_EQ(Write_Whole_File("历史数据", "a file where the folder should be", 0600), "");
  CMatLab_Matrix_Data exporter;
  exporter.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  const double value = 1.0;
  testing::internal::CaptureStderr();
  EXPECT_EQ(exporter.Save_Double_Vector(&value, 1, L"y_data.dat"), 0);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[^\n]*历史数据/y_data.dat[^\n]*Not a directory[^\n]*\n"));
}

}  // namespace
}  // namespace orsanta
