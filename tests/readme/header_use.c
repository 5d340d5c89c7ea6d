/* A use of the public header that every language which it is for must take: the record as a plain list of numbers. */
#include <orsanta/orsanta.h>

int main(void) {
  VCM_Resource_struct stations[1] = {{1, 1, 1, 2, 3, 1, -1, -1, -1}};
  double thickness = 0.0, force = 0.0;
  ORSA_resource_alloc(stations, 1);
  return do_test(stations[0].CanID, ORSANTA_TASK_MEASURE) + get_ans(1, &thickness, &force) + GetIO(0);
}
