#include "station_room.h"

namespace orsanta {

using testing::ElementsAre;
using testing::ElementsAreArray;

using Parameters = C_Station_Test;

TEST_F(Parameters, Every_Key_Stands_In_Order_And_Comes_Back_From_The_Store) {
  const std::string store = "音圈电机1参数";
  std::string keys, expected;  // the document shows them too
  for (const C_Parameter& row : station->Parameters()) expected += Format_Utf8("%s=%g ", row.key, row.initial);
  station.reset();  // saves
  std::istringstream in(File_Text(store));
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("C_VoiceMotor ", 0) == 0)
      keys += line.substr(13, line.find(' ', 13) - 13) + "=" + line.substr(line.rfind(' ') + 1) + " ";
  }
  EXPECT_EQ(keys, expected);

  // A store of an earlier version, each number with a value of its own.
  const std::string earlier = File_Text(SOURCE_FOLDER "/tests/station/reference/stored_station.txt");
  std::ofstream(store) << earlier;
  Make_Station();
  EXPECT_EQ(station->Test_Force[1], 3.125);
  EXPECT_EQ(station->test_distance, 15.125F);
  EXPECT_EQ(station->Val_Static_GForce, 17.125);
  EXPECT_NEAR(station->Surface_Force(2.0, 4.0), 16.0, 1e-10);
  EXPECT_NEAR(station->Surface_Current(16.0, 4.0), 2.0, 1e-12);
  EXPECT_THAT(Values(station->Val_Pos_Friction[1].p), ElementsAre(0.1, -0.2));
  station->Save();
  EXPECT_EQ(File_Text(store), earlier);
}

// The table in docs/parameters.md shows the rows. With ORSANTA_WRITE_DOCUMENTS set it is written, not only compared.
TEST_F(Parameters, Stand_In_The_Document) {
  const std::string path = SOURCE_FOLDER "/docs/parameters.md", document = File_Text(path);
  std::string expected = document.substr(0, document.find('\n', document.find("|---|")) + 1);
  for (const C_Parameter& row : station->Parameters()) {
    const bool is_array = std::holds_alternative<CMyArray<double>*>(row.member) ||
                          std::holds_alternative<Shared<CMyArray<double>>*>(row.member);
    expected += Format_Utf8("| `%s` | %s | %s |", row.key,
                            is_array ? "empty" : Format_Utf8("%.10g", row.initial).c_str(), row.unit);
    for (const C_Range& range : {row.ranges.panel, row.ranges.dialog, row.ranges.calibration})
      expected += range.min < range.max ? Format_Utf8(" %.10g to %.10g |", range.min, range.max) : " |";
    expected += Format_Utf8(" %s |\n", row.purpose);
  }
  if (std::getenv("ORSANTA_WRITE_DOCUMENTS") != nullptr) std::ofstream(path) << expected;
  EXPECT_EQ(File_Text(path), expected) << "scripts/parameters_doc writes it anew";
}

TEST_F(Parameters, Faults_Are_Reported_At_Start) {
  const std::wstring words[] = {L"ID:1 超电流", L"ID:1 无法回零", L"ID:1 超负荷", L"ID:1 检测到漏电流过大"};
  for (int bit = 0; bit < 4; ++bit) {
    simulator::Set_Fault_Bits(Id, uint64_t{1} << bit);
    Sleep(20);
    EXPECT_EQ(station->Report_Fault(), 1);
    EXPECT_THAT(front->Boxes(), ElementsAre(words[bit]));
    front->Clear_Record();
  }
  simulator::Set_Fault_Bits(Id, 15);
  station->Val_Run_Negative = 5;
  Make_Station();
  EXPECT_EQ(station->Val_Run_Negative, 1);  // a flag after each load
  EXPECT_THAT(front->Boxes(), ElementsAreArray(words));
  EXPECT_EQ(front->Shown()[0].flags, Box_Plain);
  EXPECT_EQ(front->Shown()[3].flags, Box_System_Modal);
  EXPECT_EQ(station->Take_Force_Back_Finish(), 1);  // a station starts as one that is back
  station->Set_Test_Finish();
  for (const int taken : {1, 0}) EXPECT_EQ(station->Take_Test_Finish() + station->Take_Test_Finish_Panel(), 2 * taken);
  for (const auto& [mode, taken] : {std::pair(0, 1), {9, 1}, {10, 0}, {-1, 0}})
    EXPECT_EQ(station->Set_TestMode(mode), taken);
  EXPECT_EQ(station->m_TestMode, 9);
}

TEST_F(Parameters, Small_Dialogs_Edit_Their_Parameter) {
  station->Val_Force_OffSet = 30.0;
  station->Val_Force_Set[1] = 130.0;
  front->Next_Dialog(C_Script().Fill(L"设定推力(g)", L"150").Confirm());
  station->Set_Force_Dlg(1);
  EXPECT_EQ(front->Shown()[0].dialog.controls[0].text, L"100.000");
  EXPECT_EQ(station->Val_Force_Set[1], 180.0);

  // The correction moves the set force along, so that the force shown stays.
  front->Next_Dialog(C_Script().Fill(L"设定推力修正值(g)", L"-20").Confirm());
  station->Set_Force_Dlg(2);
  EXPECT_EQ(station->Val_Force_OffSet, -20.0);
  EXPECT_EQ(station->Val_Force_Set[0], 150.0);

  C_VoiceMotor& s = *station;
  const auto expect_edit = [&](auto run, const wchar_t* caption, const Shared<double>& member, double max) {
    front->Next_Dialog(C_Script().Fill(caption, std::to_wstring(max)).Confirm());
    run();
    EXPECT_EQ(member, max);
  };
  expect_edit([&] { s.Set_Speed_Dlg(1); }, L"设定速度（mm/s）", s.Val_Speed_Set[1], 5000.0);
  expect_edit([&] { s.Set_Spring_Dlg(); }, L"设定弹簧K值（g/mm）", s.Val_Spring_K, 1000.0);
  expect_edit([&] { s.Set_Acc_Dlg(1); }, L"设定加速度（mm/s^2）", s.Val_Acc_Set[1], 200000.0);
  expect_edit([&] { s.Set_BeginePoint_Dlg(); }, L"原点偏移（mm）", s.Val_BeginePoint_offset, 40.0);
  expect_edit([&] { s.Set_Jerk_Dlg(); }, L"设定加加速度（mm/s^3）", s.Val_Jerk_Set, 1e12);
  expect_edit([&] { s.Set_HoldTime_Dlg(1); }, L"设定推力保持时间（ms）", s.Val_HoldTime_Set[1], 50000.0);
}

}  // namespace orsanta
