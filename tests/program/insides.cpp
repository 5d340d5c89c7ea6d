// The library as a host loads it, with one more function: what a station recorded and no export hands out.
#include "library/exports.cpp"  // for its list of stations

extern "C" ORSANTA_API int Recorded_Temperatures(int station, double* celsius, int room) {
  const CMyArray<double> recorded = Station(station).TempArray.Copy();
  for (int i = 0; i < recorded.GetSize() && i < room; ++i) celsius[i] = recorded[i];
  return recorded.GetSize();
}
