// The front: whatever an operator sees. Dialogs, message boxes and charts are plain data here; a front shows them.
//
// A front only draws and collects what the operator does. It runs no callback of a program: each event goes to a
// listener, which queues it and returns at once. The callbacks of a dialog therefore run on the thread that runs the
// dialog (support/dialog/dialog.h), and a box from any thread waits at the clock (support/dialog/message_box.h), so
// that no front can lock up.
//
// Three fronts exist: the console front (built in), the desktop front (a plug-in that Front() loads when there is a
// display) and the scripted front of the tests. All operations may be called from any thread.
//
// This header is the whole of what a plug-in needs; it holds no code that would have to be linked.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orsanta {

// "微米仪3", as the panel names the station.
inline std::wstring Station_Name(int station) {
  return L"微米仪" + std::to_wstring(station);
}

enum class C_Control_Kind {
  Button,           // a press sends an event
  Dynamic_Display,  // a text that changes while the dialog is open
  Text_Display,     // a fixed text
  Text_Edit,
  Integer_Edit,  // range optional
  Number_Edit,   // range and decimals
  Check_Box,
  Dropdown,
  Blank,  // an empty cell
};

struct C_Control_Model {
  C_Control_Kind kind = C_Control_Kind::Blank;
  std::wstring caption;
  int column = 0;           // controls of one column are placed under each other in the order of the list
  float width = 10.0F;      // equal widths are drawn equally wide
  int rows = 1;             // height
  float text_scale = 1.0F;  // size of the text, 1 for the normal one
  std::wstring text;        // content of a display, and of any edit at opening, as it is to be shown
  bool has_range = false;
  double min = 0.0;
  double max = 0.0;
  int digits = 0;                   // decimals of a number edit
  int selected = 0;                 // place of a drop-down at opening; 0 or 1 of a check box
  std::vector<std::wstring> items;  // of a drop-down
  bool is_main = false;             // a button that is pressed all day
};

struct C_Dialog_Model {
  std::wstring title;
  bool confirms =
      false;  // has a way to confirm and a way to cancel, and is modal to the windows of its thread under it
  std::vector<C_Control_Model> controls;
  int owner = 0;                  // the dialog of the same thread on which this one stands; 0 for the first of a thread
  std::map<int, int> stations{};  // number of the station that a column of controls belongs to
  bool shows_stations = false;    // with what Show_Stations tells, above all else
};

// The content of a control when the operator confirms: text of an edit as it was typed, place of a drop-down or check
// box.
struct C_Control_Entry {
  std::wstring text;
  int selected = 0;
};

struct C_Dialog_Event {
  enum class Kind { Press, Confirm, Cancel };
  Kind kind = Kind::Cancel;
  int control = -1;                      // Press: place of the button in the model's list
  std::vector<C_Control_Entry> entries;  // Confirm: one for each control of the list
};

// Takes the events of one open dialog. Any thread; returns at once.
class C_Dialog_Listener {
 public:
  virtual ~C_Dialog_Listener() = default;
  virtual void On_Dialog_Event(const C_Dialog_Event& event) = 0;
};

struct C_Message_Model {
  std::wstring text;
  unsigned flags = 0;    // Box_ values of support/dialog/message_box.h
  std::wstring title{};  // what it is about, empty where that is not known
  int station = 0;       // number of the station it is about, 0 for none
  int owner = 0;         // the dialog of the same thread to whose windows the box is modal; 0: modal to none
};

enum class C_Station_Condition {
  Not_Connected,
  Lifted,     // the probe is up
  Measuring,  // a task runs
  Pressing,   // the probe is down, or on its way up
  Result,     // the probe is down and its measurement has ended
  Fault,      // the last measurement failed
};

// One station at a glance.
struct C_Station_Tile {
  int station = 0;  // number as it stands on the panel
  C_Station_Condition condition = C_Station_Condition::Not_Connected;
  std::wstring thickness{};  // of the last measurement, mm; empty for none
  std::wstring force{};      // that is set, with its unit

  bool operator==(const C_Station_Tile&) const = default;
};

// What becomes of the press of a button.
enum class C_Command_State {
  Running,  // its callback runs
  Asks,     // its callback waits for the operator, in a dialog or a box
  Ended,
};

// Takes the answer to one message box, an Answer_ value. Any thread; returns at once.
class C_Message_Listener {
 public:
  virtual ~C_Message_Listener() = default;
  virtual void On_Answer(int answer) = 0;
};

struct C_Chart_Model {
  std::wstring title;
  std::vector<double> x;
  std::vector<double> y;
  int width = 500;   // pixels at opening
  int height = 400;  // pixels at opening
  bool axes_follow = true;
  bool joined = true;  // a line through the points, else the points alone
  std::wstring note;   // shown under the drawing, where it is not empty
  int station = 0;     // number of the station it is about, 0 for none
  bool opens = true;   // its window, where it is not open
};

class C_Front {
 public:
  virtual ~C_Front() = default;

  // Called on each thread that asks for the front, each time: a front that must see to something before the process
  // ends does so at the end of the main thread.
  virtual void On_Used() {}

  // Opens a dialog and returns its handle, above 0. The listener gets its events until Close_Dialog has returned; a
  // dialog that confirms stays open after a Confirm event until it is closed or its entries are refused.
  virtual int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) = 0;
  virtual void Close_Dialog(int dialog) = 0;
  // Sets the visible text of a control: the caption of a button, the content of a display or an edit.
  virtual void Set_Control_Text(int dialog, int control, const std::wstring& text) = 0;
  // Shows at the control why its entry is refused, and puts the cursor there. Follows a Confirm event, once for each
  // bad entry.
  virtual void Refuse_Entry(int dialog, int control, const std::wstring& reason) = 0;
  // Marks the button whose command runs. Each press that was sent ends in one Ended, or in one Refuse_Press where it
  // was not carried out.
  virtual void Set_Command(int dialog, int control, C_Command_State state) = 0;
  // Says in one line why the press of a button did nothing.
  virtual void Refuse_Press(int dialog, int control, const std::wstring& reason) = 0;

  // What the dialogs with `shows_stations` show, until the next call.
  virtual void Show_Stations(const std::vector<C_Station_Tile>& tiles) = 0;

  // Shows a box and returns at once; the listener gets exactly one answer, possibly before the return.
  virtual void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) = 0;

  // Opens the chart with that number, if the model says so, or redraws it. The owner of the charts never uses a number
  // twice.
  virtual void Draw_Chart(unsigned chart, const C_Chart_Model& model) = 0;
  virtual bool Is_Chart_Open(unsigned chart) = 0;
  virtual void Close_Chart(unsigned chart) = 0;
  // Brings an open chart above the other windows, and back where it was put away.
  virtual void Raise_Chart(unsigned chart) = 0;
};

// The present front. At the first call: the desktop front if a display and the plug-in are there, else the console
// front.
C_Front& Front();
// Puts a front in place of the present one and returns that, null for the built-in choice. For tests; no dialog, box or
// chart may be open.
std::unique_ptr<C_Front> Replace_Front(std::unique_ptr<C_Front> front);

// What the plug-in exports under the name "orsanta_make_front": returns a new front, or null with the reason written to
// the standard error stream.
using Make_Front_Function = C_Front* (*)();

}  // namespace orsanta
