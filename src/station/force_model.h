// C_Force_Model: the conversions between force, current and position, and the fits that they rest on.
//
// The polynomial serves until a landing is known; from then on the force surface, once there is one, works at the
// height of the last landing. The polynomial has no spring term at run time: the spring enters through the calibration.
//
// Units: forces grams, currents amperes, positions millimetres.
//
// Threads. Any thread may call; a calibration may replace the model meanwhile, and an operation on the surface works
// with one copy of it from start to end. The sample correction belongs to one thread.
#pragma once

#include "station/station_parameters.h"

namespace orsanta {

class C_Force_Model : public C_Station_Parameters {
 public:
  // --- Polynomial and spring ---

  // The coil current of the force; not-a-number for a force that the polynomial never reaches.
  double Force_To_Current(double force) const;
  double Current_To_Force(double current) const {
    return Val_Force_KK * current * current + Val_Force_K * current + Val_Static_GForce;
  }
  // Force of the suspension at the position; zero at Val_mark_pos.
  double Spring_Force(double position) const;
  double Force_Less_Spring(double current, double position) const {
    return Current_To_Force(current) - Spring_Force(position);
  }
  CMyArray<double> Currents_To_Forces(CMyArray<double> currents) const;
  // positions must be at least as long as currents.
  CMyArray<double> Net_Forces(CMyArray<double> currents, CMyArray<double> positions) const;
  // Fits Val_Force_KK, Val_Force_K and Val_Static_GForce to n pairs of current and force. Returns 1, or 0 when n is
  // below 3.
  int Fit_Force_Model(double* currents, double* forces, int n);

  // --- Force surface, which must hold exactly six coefficients ---

  double Surface_Current(double force, double position) const;
  double Surface_Force(double current, double position) const;
  CMyArray<double> Surface_Currents(CMyArray<double> forces, CMyArray<double> positions) const;
  CMyArray<double> Surface_Forces(CMyArray<double> currents, CMyArray<double> positions) const;
  // Fits the surface. Always 1.
  int Surface_Fit(const CMyArray<double>& currents, const CMyArray<double>& positions, const CMyArray<double>& forces);

  // --- The one or the other ---

  // The current of the next landing for the force: by the surface at the height of the last landing once both are
  // known, else by the polynomial.
  double Landing_Current(double force) const;
  // The current for the force at the position: by the surface once there is one, else by the polynomial, in single
  // precision and with the spring.
  double Current_At(double force, double position) const;

  // --- Friction and sample correction ---

  // The friction force of the fit at each position.
  CMyArray<double> Friction_Forces(CMyArray<double> positions, FitData fit) const;
  // The linear sample correction: a store of at most 11 pairs, which starts as the identity. Always 1.
  int Add_Sample(double y, double x);
  // The straight line through the store at x. The store must not be empty.
  double Sample_Value(double x) const;

  Shared<double> Last_Land_Pos;  // observed position of the last cycle, 0.0 until the first one
  CMyArray<double> m_SampleY;    // the store of the sample correction
  CMyArray<double> m_SampleX;

 protected:
  ~C_Force_Model() = default;

  // Whether the drive counts its positions the other way round than the model.
  virtual bool Is_Inverted() const = 0;
};

}  // namespace orsanta
