// A liborsanta.so.1 that does what no simulator does on command: results come, lift-offs end and tasks are taken when a
// test says so.
#include <orsanta/orsanta.h>

#include <optional>
#include <utility>

static struct {
  std::optional<double> result, next;
  bool is_due = false, is_lifted = true, takes_tasks = true;
  int measurements = 0;
} the[3];  // of the stations 1 and 2
static int running;

// what: the result that stands now, the one that the next task brings, the end of a lift-off, or the taking of tasks.
extern "C" ORSANTA_API void Script(int station, int what, double value) {
  auto& its = the[station];
  if (what < 2) (what == 0 ? its.result : its.next) = value;
  if (what >= 2) (what == 2 ? its.is_lifted : its.takes_tasks) = value != 0.0;
}
extern "C" ORSANTA_API int Measurements(int station) {
  return the[station].measurements;
}
extern "C" ORSANTA_API int Running() {
  return running;
}

void ORSA_resource_alloc(const VCM_Resource_struct*, int) noexcept {}
void Orsanta_dll_init(int) noexcept {
  running = 1;
}
void Orsanta_dll_uninit() noexcept {
  running = 0;
}

int do_test(int station, int task_code) noexcept {
  auto& its = the[station];
  if (!its.takes_tasks || task_code == ORSANTA_TASK_FORCE_BACK) return its.takes_tasks;
  ++its.measurements;
  its.is_due = its.next.has_value();
  return 1;
}
int get_ans(int station, double* thickness, double* force) noexcept {
  auto& its = the[station];
  auto* const given = its.result ? &its.result : std::exchange(its.is_due, false) ? &its.next : nullptr;
  if (given == nullptr) return 0;
  *thickness = *std::exchange(*given, std::nullopt);
  *force = 100.0;
  return 1;
}
int Get_Force_Back_Finish(int station) noexcept {
  return the[station].is_lifted;
}

void Get_Force(int station, double* force) noexcept {
  *force = 100.0 * station;
}
void Get_Ans_Offset(int station, double* offset) noexcept {
  *offset = 5.0 * station;
}
int GetIO(int channel) noexcept {
  return channel == 0 ? 3 : channel == 1 ? -1 : channel == 2;
}
int SetIO(int, int) noexcept {
  return 1;
}
int GoZero(int) noexcept {
  return 1;
}
void Check_User_Zero(int) noexcept {}
void Set_Force(int, double) noexcept {}
void Set_Force2(int, double) noexcept {}
void Set_Ans_Offset(int, double) noexcept {}
void set_test_distance(int, double) noexcept {}
void Save_Parameter2file(int) noexcept {}
void show_dlg() noexcept {}
