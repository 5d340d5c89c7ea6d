// The station's histories and their export. The files are a snapshot that nothing reads back.
#include "station/history.h"

#include <algorithm>

#include "station/voice_motor.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta {

void C_History::Append(double value) {
  const C_Lock_Guard hold(m_Lock);
  Make_Room(1);
  m_Values.Add(value);
}

void C_History::Append(const CMyArray<double>& values) {
  const C_Lock_Guard hold(m_Lock);
  const int surplus = values.GetSize() > m_Limit ? values.GetSize() - m_Limit : 0;
  Make_Room(values.GetSize() - surplus);
  m_Values.ExpandMem(m_Values.GetSize() + values.GetSize() - surplus);
  for (int i = surplus; i < values.GetSize(); ++i) m_Values.Add(values[i]);
}

// Drops oldest values until n more fit: a quarter of the limit at once, or more where n asks for it.
void C_History::Make_Room(int n) {
  const int excess = m_Values.GetSize() + n - m_Limit;
  if (excess <= 0) return;
  const int dropped = std::max(excess, m_Limit / 4);
  m_Values.RemoveData(0, std::min(dropped, m_Values.GetSize()));
}

CMyArray<double> C_History::Copy() const {
  const C_Lock_Guard hold(m_Lock);
  return m_Values;
}

int C_History::GetSize() const {
  const C_Lock_Guard hold(m_Lock);
  return m_Values.GetSize();
}

void C_History::Clear() {
  const C_Lock_Guard hold(m_Lock);
  m_Values.Clear();
}

namespace {

// The local date and time as it stands in file names; the year is left out.
class get_time {
 public:
  std::wstring Time_Text() const {
    const C_Local_Time now = Local_Time_Now();
    return Format_Text("%d月%d日%d时%d分%d秒", now.month, now.day, now.hour, now.minute, now.second).Text();
  }
};

}  // namespace

void C_VoiceMotor::Export_History() {
  const std::wstring time_text = get_time().Time_Text();  // once, so that the four files share it
  const auto save = [&](const CMyStringW& prefix, const C_History& history) {
    const CMyArray<double> values = history.Copy();
    const std::wstring name = prefix.Text() + time_text;
    m_MatData.Save_Double_Vector(values.GetData(), values.GetSize(), name.c_str());
  };
  save(Format_Text("ThicknessArray%d ", CanID), ThicknessArray);
  save(Format_Text("TempArray%d ", CanID), TempArray);
  save(Format_Text("TestTimeArray%d ", CanID), TestTimeArray);
  save(Format_Text("SlowTestData%d ", CanID), SlowTestData);
}

}  // namespace orsanta
