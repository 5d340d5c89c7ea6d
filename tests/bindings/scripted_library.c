/* A liborsanta.so.1 that does what no simulator does on command: results come, lift-offs end and tasks are taken when a
   test says so. */
#include <orsanta/orsanta.h>

enum { STATIONS = 2, NOW = 0, NEXT_TASK = 1, LIFTED = 2, TAKES_TASKS = 3 };

static struct {
  int has_result, has_next, due, lifted, takes, measurements;
  double result, next;
} the[STATIONS + 1];
static int running;

ORSANTA_API void Script(int station, int what, double value) {
  switch (what) {
    case NOW:
      the[station].has_result = 1;
      the[station].result = value;
      break;
    case NEXT_TASK:
      the[station].has_next = 1;
      the[station].next = value;
      break;
    case LIFTED:
      the[station].lifted = value != 0.0;
      break;
    case TAKES_TASKS:
      the[station].takes = value != 0.0;
      break;
  }
}
ORSANTA_API int Measurements(int station) {
  return the[station].measurements;
}
ORSANTA_API int Running(void) {
  return running;
}

void ORSA_resource_alloc(const VCM_Resource_struct* records, int count) {
  (void)records, (void)count;
}
void Orsanta_dll_init(int IoMode) {
  int i;
  (void)IoMode;
  for (i = 1; i <= STATIONS; ++i) the[i].lifted = the[i].takes = 1;
  running = 1;
}
void Orsanta_dll_uninit(void) {
  running = 0;
}

int do_test(int station, int task_code) {
  if (!the[station].takes) return 0;
  if (task_code == ORSANTA_TASK_FORCE_BACK) return 1;
  ++the[station].measurements;
  the[station].due = the[station].has_next;
  the[station].has_next = 0;
  return 1;
}
int get_ans(int station, double* thickness, double* force) {
  int before = the[station].has_result, due = !before && the[station].due;
  *thickness = before ? the[station].result : the[station].next;
  *force = 100.0;
  the[station].has_result = 0;
  if (due) the[station].due = 0;
  return before || due;
}
int Get_Force_Back_Finish(int station) {
  return the[station].lifted;
}

void Check_User_Zero(int station) {
  (void)station;
}
int GoZero(int station) {
  return station == 1;
}
void Set_Force(int station, double force) {
  (void)station, (void)force;
}
void Set_Force2(int station, double force) {
  (void)station, (void)force;
}
void Get_Force(int station, double* force) {
  *force = 100.0 * station;
}
void Save_Parameter2file(int station) {
  (void)station;
}
void Set_Ans_Offset(int station, double offset) {
  (void)station, (void)offset;
}
void Get_Ans_Offset(int station, double* offset) {
  *offset = 5.0 * station;
}
void set_test_distance(int station, double distance) {
  (void)station, (void)distance;
}
int SetIO(int channel, int value) {
  return (void)channel, (void)value, 1;
}
int GetIO(int channel) {
  return channel == 0 ? 3 : channel == 1 ? -1 : channel == 2;
}
void show_dlg(void) {}
