// Wide strings, traces, files, processes, vector files and serial ports.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <numeric>

#include "common/other_process.h"
#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "simulated_clock/simulated_clock.h"
#include "support/base/process.h"
#include "support/services/serial.h"
#include "support/services/vector_file.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

TEST(Wide_String, Formats_Wide_Texts_Numbers_And_Texts_Of_Any_Length) {
  CMyStringW text;
  text.Format(L"%s|%5s|%-3s|%d%%|%x|%06.0f|%3.3f|%c", L"微米仪", L"厚度", L"a", -3, 255, 42.4, 1.0005, L'秒');
  EXPECT_EQ(text.Text(), L"微米仪|   厚度|a  |-3%|ff|000042|1.000|秒");
  text = L"x";
  EXPECT_EQ(text.Format(L"%s%s", text.GetBuffer(), text.GetBuffer()).Text(), L"xx") << "its own text as an argument";
  const std::wstring longer(5000, L'长');
  EXPECT_EQ(Format_Text("<%s>", To_Utf8(longer).c_str()).Text(), L"<" + longer + L">");
  EXPECT_EQ(text.Format(L"<%s>", longer.c_str()).Text(), L"<" + longer + L">");
}

TEST(Wide_String, Converts_Utf8_Both_Ways_And_Marks_What_Is_None) {
  const std::wstring all = L"\x7F\x80\xD7FF\xE000厚\xFFFF\x10FFFF";
  EXPECT_EQ(To_Utf8(all), "\x7F\xC2\x80\xED\x9F\xBF\xEE\x80\x80厚\xEF\xBF\xBF\xF4\x8F\xBF\xBF");
  EXPECT_EQ(From_Utf8(To_Utf8(all)), all);
  EXPECT_EQ(From_Utf8("\x80\xED\xA0\x80\xE5\x8E"), std::wstring(6, L'\xFFFD'));
  EXPECT_EQ(To_Utf8({wchar_t{0xD800}, wchar_t{0xDFFF}, wchar_t{0x110000}}), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
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

TEST(Processes, Paths_Are_Cut_At_Their_Last_Separator_And_Dot) {
  for (const std::wstring expected :
       {L"|/opt/ors.d/|orsanta.bin|.exe", L"D:|\\设备\\|Orsanta|.exe", L"|/a.b/|c|", L"||.hidden|", L"C:||x|"}) {
    std::wstring path = expected, drive, dir, name, ext;
    std::erase(path, L'|');
    CMyExecuteProc::SplitPath(path, drive, dir, name, ext);
    EXPECT_EQ(drive + L'|' + dir + L'|' + name + L'|' + ext, expected);
  }
}

TEST(Processes, Are_Found_By_Their_Executable_And_By_The_Name_They_Were_Started_As) {
  const C_Temp_Folder folder;
  std::filesystem::copy_file("/bin/sleep", "replaced");
  const C_Other_Process child([] { execl("./replaced", "C:\\设备\\Orsanta_of_a_test.exe", "60", nullptr); });
  std::filesystem::remove("replaced");
  CMyArray<int> ids;
  int found = 0;
  for (const wchar_t* name : {L"Orsanta_of_a_test.exe", L"replaced", L"no such program"})
    found += CProcessAndThreadSnapShot::GetProcessIDFromProcessName(name, ids, 0);
  EXPECT_EQ(found, 2);
  EXPECT_THAT(std::vector<int>(ids.begin(), ids.end()), testing::ElementsAre(child.Id(), child.Id()));
}

// As GNU Octave writes such a file and NumPy reads it.
TEST(Vector_Files, Keep_Every_Bit_Under_Any_Name_And_Are_Replaced_Whole_Or_Not_At_All) {
  const C_Temp_Folder folder;
  const double values[] = {0.1,          -1.0 / 3.0, 5e-324,   1.7976931348623157e308, -0.0, 1e22,
                           std::nan(""), HUGE_VAL,   -HUGE_VAL};
  const std::string one = "0.10000000000000001\n";
  const std::tuple<const wchar_t*, std::string, std::string, int, std::string> files[] = {
      {L"x_data.dat", "x_data.dat", "x_data.dat\n# name: x_data", 9,
       one + "-0.33333333333333331\n4.9406564584124654e-324\n1.7976931348623157e+308\n-0\n1e+22\nNaN\nInf\n-Inf\n"},
      {L"x_data.dat", "x_data.dat", "x_data.dat\n# name: x_data", 1, one},
      {L"Ab1 12月\n5/9\\秒\r", "Ab1 12月_5_9_秒_.txt", "Ab1 12月_5_9_秒_\n# name: Ab1_12__5_9___", 1, one},
      {L"7az.txt", "7az.txt", "7az.txt\n# name: _7az", 0, ""},
      {L"", ".txt", "\n# name: _", 0, ""},
  };
  CMatLab_Matrix_Data exporter;
  exporter.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  for (const auto& [name, file, head, count, lines] : files) {
    EXPECT_EQ(exporter.Save_Double_Vector(values, count, name), 1);
    EXPECT_EQ(File_Text("历史数据/" + file),
              Format_Utf8("# %s\n# type: matrix\n# rows: %d\n# columns: 1\n", head.c_str(), count) + lines);
    EXPECT_EQ(std::filesystem::status("历史数据/" + file).permissions(), std::filesystem::perms(0644));
  }
  // A failure is shown once, with file and reason, and leaves nothing.
  std::filesystem::create_directories("taken/y_data.dat");
  std::ofstream("file");
  for (const wchar_t* where : {L"taken", L"file"}) {
    exporter.SetBaseSaveFileDir_SubDir(where, 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(exporter.Save_Double_Vector(nullptr, 0, L"y_data.dat"), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("[^\n]*" + To_Utf8(where) + "/y_data.dat[^\n]*(Is|Not) a directory[^\n]*\n"));
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("taken"), {}), 1);
}

class Serial : public ::testing::Test {
 protected:
  int Write(const std::string& bytes) { return port.WriteComData(bytes.data(), static_cast<int>(bytes.size()), count); }

  C_Simulated_Clock clock{1};
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  C_Pty line{1};
  CComSerial port;
  int count = -1;
  char bytes_in[256];
};

TEST_F(Serial, Port_Numbers_Follow_The_Links_And_A_Port_Has_One_User) {
  std::ofstream("COM2") << "no device";
  for (const int absent : {-1, 0, 2}) EXPECT_EQ(port.OpenCom(absent), 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(port.OpenCom(1000), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "COM1000 (/dev/ttyS999): does not open: No such file or directory\n");
  EXPECT_EQ(port.SetPropW(9600, 8, 1, 0) + port.GetComData(bytes_in, 1, count) + Write("x"), 0);
  CComSerial other;
  ASSERT_EQ(port.OpenCom(1), 1);
  EXPECT_EQ(other.OpenCom(1), 0);
  port.CloseCom();
  EXPECT_EQ(other.OpenCom(1), 1);
}

TEST_F(Serial, Passes_Every_Byte_At_Each_Rate_And_Never_Waits) {
  ASSERT_EQ(port.OpenCom(1), 1);
  EXPECT_EQ(line.Rate(), 115200);
  for (const int rate : {9600, 14400, 19200, 28800, 38400, 57600, 4800, 230400, 115200}) {
    ASSERT_EQ(port.SetPropW(rate, 8, 1, 0), 1) << rate;
    EXPECT_EQ(line.Rate(), rate);
  }
  for (const auto& [baud, bits, stop, parity] :
       {std::array{0, 8, 1, 0}, {-9600, 8, 1, 0}, {9600, 7, 1, 0}, {9600, 8, 2, 0}, {9600, 8, 1, 1}})
    EXPECT_EQ(port.SetPropW(baud, bits, stop, parity), 0) << baud;
  EXPECT_EQ(line.Rate(), 115200);

  EXPECT_EQ(port.GetComData(bytes_in, 1, count), 1);
  EXPECT_EQ(count, 0);
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), 0);
  ASSERT_EQ(Write(bytes), 1);
  EXPECT_EQ(count, 256);
  EXPECT_EQ(line.Take_At_Least(256), bytes);
  line.Send(bytes);
  std::string got;  // bytes cross the line in real time
  for (int wait = 0; got.size() < bytes.size() && wait < 2000; ++wait) {
    EXPECT_EQ(port.GetComData(bytes_in, 256, count), 1);
    got.append(bytes_in, static_cast<size_t>(count));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(got, bytes);

  EXPECT_EQ(Write(std::string(1000000, 'x')), 1);  // nobody reads it
  EXPECT_GT(count, 0);
  EXPECT_LT(count, 1000000);
}

TEST_F(Serial, Finds_An_Adapter_Again_That_Comes_And_Goes_And_Tells_Of_It_In_One_Box_At_A_Time) {
  front->On_Box(L"串口1已断开", Answer_Ok, 100000);  // the operator is away
  ASSERT_EQ(port.OpenCom(1), 1);
  ASSERT_EQ(port.SetPropW(19200, 8, 1, 0), 1);
  for (int round = 0; round < 20; ++round) {
    line.Pull_Out();
    for (int i = 0; i <= 1000; ++i) {  // the last try at 1000 ms
      EXPECT_EQ(port.GetComData(bytes_in, 1, count), 0);
      EXPECT_EQ(Write("x"), 0);
      Sleep(1);
    }
    line.Plug_In();
    Sleep(498);
    EXPECT_EQ(Write("x"), 0) << "tried twice a second";
    Sleep(1);
    ASSERT_EQ(Write("back\n"), 1);
    EXPECT_EQ(line.Take_At_Least(5), "back\n");
    EXPECT_EQ(line.Rate(), 19200);
    EXPECT_EQ(front->Count_Boxes(L"串口1已断开"), 1);
  }
  Sleep(100000);
  line.Pull_Out();
  EXPECT_EQ(port.GetComData(bytes_in, 1, count), 0);
  EXPECT_EQ(front->Count_Boxes(L"串口1已断开"), 2);
}

}  // namespace
}  // namespace orsanta
