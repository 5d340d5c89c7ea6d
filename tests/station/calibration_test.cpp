#include "calibration_operator.h"
#include "station_room.h"

namespace orsanta {

constexpr const wchar_t* First_Dialog = L"请输入测试最大电流(A)";
constexpr const wchar_t* Force_Dialog = L"请输入当前推力(g)";

class Calibration : public C_Station_Test {
 protected:
  // Whether a landing at a known height goes by a surface.
  bool Has_Surface() {
    station->Last_Land_Pos = 4.0;
    return station->Landing_Current(100.0) != station->Force_To_Current(100.0);
  }
  // What the newest dialog offers: each caption with its text, range and decimals.
  std::string Offered() {
    std::ostringstream offered;
    C_Dialog_Model newest;
    for (const C_Shown& shown : front->Shown())
      if (shown.kind == C_Shown::Kind::Dialog) newest = shown.dialog;
    for (const C_Control_Model& control : newest.controls) {
      offered << To_Utf8(control.caption) << "=" << To_Utf8(control.text) << " ";
      if (control.has_range) offered << control.min << ".." << control.max << "/" << control.digits << " ";
    }
    return offered.str();
  }
};

TEST_F(Calibration, Two_Heights_Fit_The_Polynomial_And_Drop_The_Surface_Of_Three) {
  Give_Surface();
  station->Val_Spring_K = 2.0;
  C_Calibration_Operator person{.heights = {0.0, -3.0}};
  person.Prepare(*front);
  EXPECT_EQ(station->Calibrate_Force(), 1);
  EXPECT_FALSE(Has_Surface());
  const std::vector<double> y = Load("y_data.dat"), z = Load("z_data.dat");
  EXPECT_THAT(Load("x_data.dat"), testing::Pointwise(testing::DoubleEq(), {0.4, 0.6, 0.8, 1.0, 0.4, 0.6, 0.8, 1.0}));
  ASSERT_EQ(z.size(), 8U);
  for (size_t k = 0; k < z.size(); ++k) {
    EXPECT_NEAR(y[k], k < 4 ? 9.0 : 6.0, 0.002);                        // the bare anvil
    EXPECT_NEAR(z[k], person.readings[k] + (y[k] - y[0]) * 2.0, 1e-9);  // taken to the height of the first
  }
  EXPECT_EQ(station->Val_mark_pos, y[0]);

  Make_Station();
  person = {.heights = {-8.0, -4.0, 0.0}};
  person.Prepare(*front);
  EXPECT_EQ(station->Calibrate_Force(), 1);
  EXPECT_EQ(front->Boxes().back(), L"3D推力拟合误差0.114 g");
  EXPECT_TRUE(Has_Surface());
  person = {.max_current = 0.8, .min_current = 0.8};
  person.Prepare(*front);
  EXPECT_EQ(station->Calibrate_Force(), 1);
  EXPECT_EQ(front->Boxes().back(), L"2D推力拟合误差nan g") << "one current alone gives no model";
  Expect_No_Landing([this] { return Measure(); }, L"ID:1 电流不是有效数字");
}

TEST_F(Calibration, Model_Entered_By_Hand_Is_Linear) {
  Give_Surface();
  station->Val_mark_pos = 3.0;
  station->Val_Spring_K = 2.0;
  station->Val_Static_GForce = -17.5;
  front->On_Dialog(First_Dialog, C_Script().Fill(L"标定最大距离", L"12.5").Select(L"直接设置标定参数", 1).Confirm());
  EXPECT_EQ(station->Calibrate_Force(), 0);  // cancelled at the hand entry
  EXPECT_EQ(Offered(),
            "推力常数(N/A)=0.0000100000000000 -3..5/16 弹簧Kp(N/mm)=0.0200000000000000 -3..5/16 "
            "零位补偿(N)=-0.1750000000000000 -3..5/16 ");
  EXPECT_TRUE(Has_Surface());
  EXPECT_EQ(station->test_distance, 12.5F);  // of the first dialog

  front->On_Dialog(First_Dialog, C_Script().Select(L"直接设置标定参数", 1).Confirm());
  front->Next_Dialog(C_Script().Fill(L"推力常数(N/A)", L"0.905").Confirm());  // the others are shown in newtons too
  EXPECT_EQ(station->Calibrate_Force(), 1);
  EXPECT_NEAR(station->Force_To_Current(73.0), 1.0, 1e-12);
  EXPECT_EQ(station->Val_Force_KK, 0.0);
  EXPECT_NEAR(station->Spring_Force(1.5), 3.0, 1e-12);  // the mark is at 0
  EXPECT_FALSE(Has_Surface());
}

TEST_F(Calibration, Cancel_Leaves_The_Model_And_The_Probe_Up) {
  Give_Surface();
  front->On_Dialog(First_Dialog,
                   C_Script().Fill(L"测试采集的位置点数", L"5").Confirm());  // all stations' until the next
  EXPECT_EQ(station->Calibrate_Force(), 0);
  front->Clear_Record();
  Make_Station();
  EXPECT_EQ(station->Calibrate_Force(), 0);  // at the first dialog
  EXPECT_EQ(Offered(),
            "电机=推力矫正 请输入测试最大电流(A)=1.000 -5..10/3 请输入测试最小电流(A)=0.0000 -5..10/4 "
            "测试采集的电流点数=5 4..10/0 测试采集的位置点数=5.0 1..10/1 标定最大距离=10.0 1..50/1 直接设置标定参数= ");
  EXPECT_THAT(front->Boxes(), testing::IsEmpty());
  const C_Script settings = C_Calibration_Operator().Settings();
  for (const int confirmed : {0, 3}) {
    front->On_Dialog(First_Dialog, settings);
    for (int i = 0; i < confirmed; ++i) front->On_Dialog(Force_Dialog, C_Script().Fill(Force_Dialog, L"50").Confirm());
    EXPECT_EQ(station->Calibrate_Force(), 0);
    EXPECT_EQ(Offered(), "请输入当前推力(g)=0.000 0..10000/3 ");
    EXPECT_LT(simulator::True_Position(Id), 1.0);
  }
  EXPECT_EQ(station->Val_Force_K, 0.001);
  EXPECT_TRUE(Has_Surface());
  EXPECT_TRUE(Load("x_data.dat").empty());

  station->Val_Speed_Set[1] = std::nan("");  // refused at the first landing, which ends the calibration
  front->On_Dialog(First_Dialog, settings);
  EXPECT_EQ(station->Calibrate_Force(), 0);
  EXPECT_THAT(front->Boxes().back(), testing::StartsWith(L"ID:1 速度不是有效数字"));
  station->Val_Speed_Set[1] = 20.0;

  // A position that cannot be read is told, and the sequence goes on.
  front->On_Dialog(First_Dialog, settings);
  front->On_Box(L"请调整测量头高度", Answer_Ok, 0, [this] { Fall_Silent(); });
  front->On_Dialog(Force_Dialog, C_Script().Run([] { simulator::Set_Silent(Id, false); }).Cancel());
  EXPECT_EQ(station->Calibrate_Force(), 0);
  EXPECT_EQ(front->Count_Boxes(L"位置数据err"), 1);
}

}  // namespace orsanta
