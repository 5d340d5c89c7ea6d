#include "station/force_model.h"

#include <cmath>
#include <utility>

#include "numeric/force_surface.h"
#include "numeric/polyfit.h"

namespace orsanta {

namespace {

constexpr double Linear_Below_KK = 1e-9;  // up to this square term, g/A^2, the polynomial counts as linear
constexpr int Sample_Limit = 10;          // pairs of the sample correction beyond which the oldest goes

CMyArray<double> One_Element(double value) {
  CMyArray<double> array;
  array.Add(value);
  return array;
}

double Invert_Surface(double force, double position, const CMyArray<double>& surface) {
  CMyArray<double> current;
  C_My3DPolyfit().my3dinvval(One_Element(force), One_Element(position), surface, current);
  return current[0];
}

bool Is_Surface(const CMyArray<double>& coefficients) {
  return coefficients.GetSize() > 3;
}

}  // namespace

double C_Force_Model::Force_To_Current(double force) const {
  const double G = Val_Static_GForce;
  const double K = Val_Force_K;
  const double KK = Val_Force_KK;
  if (KK <= Linear_Below_KK) return (force - G) / K;
  // The larger root of KK I^2 + K I + G = force, which grows with the force.
  const double D = K * K - 4.0 * KK * G + 4.0 * force * KK;
  return -(K - std::sqrt(D)) / (2.0 * KK);
}

double C_Force_Model::Spring_Force(double position) const {
  if (Is_Inverted()) return (Val_mark_pos + position) * Val_Spring_K;
  return (position - Val_mark_pos) * Val_Spring_K;
}

CMyArray<double> C_Force_Model::Currents_To_Forces(CMyArray<double> currents) const {
  for (double& value : currents) value = Current_To_Force(value);
  return currents;
}

CMyArray<double> C_Force_Model::Net_Forces(CMyArray<double> currents, CMyArray<double> positions) const {
  for (int i = 0; i < currents.GetSize(); ++i) currents[i] = Force_Less_Spring(currents[i], positions[i]);
  return currents;
}

int C_Force_Model::Fit_Force_Model(double* currents, double* forces, int n) {
  if (n < 3) return 0;
  CMyArray<double> x;
  CMyArray<double> z;
  for (int i = 0; i < n; ++i) {
    x.Add(currents[i]);
    z.Add(forces[i]);
  }
  CMyArray<double> res;  // highest power first
  CMyPolyfit().My_PolyFit(x, z, 2, res);
  Val_Force_KK = res[0];
  Val_Force_K = res[1];
  Val_Static_GForce = res[2];
  return 1;
}

int C_Force_Model::Surface_Fit(const CMyArray<double>& currents, const CMyArray<double>& positions,
                               const CMyArray<double>& forces) {
  CMyArray<double> fitted;
  C_My3DPolyfit().my3dfit(currents, positions, forces, fitted);
  m_P = std::move(fitted);
  return 1;
}

double C_Force_Model::Surface_Current(double force, double position) const {
  return Invert_Surface(force, position, m_P);
}

double C_Force_Model::Surface_Force(double current, double position) const {
  return Surface_Forces(One_Element(current), One_Element(position))[0];
}

CMyArray<double> C_Force_Model::Surface_Currents(CMyArray<double> forces, CMyArray<double> positions) const {
  CMyArray<double> currents;
  C_My3DPolyfit().my3dinvval(forces, positions, m_P, currents);
  return currents;
}

CMyArray<double> C_Force_Model::Surface_Forces(CMyArray<double> currents, CMyArray<double> positions) const {
  CMyArray<double> forces;
  C_My3DPolyfit().my3dval(currents, positions, m_P, forces);
  return forces;
}

double C_Force_Model::Landing_Current(double force) const {
  // One copy serves the question and the answer, since a calibration may replace the surface between the two.
  const CMyArray<double> surface = m_P;
  const double position = Last_Land_Pos;
  if (position == 0.0 || !Is_Surface(surface)) return Force_To_Current(force);
  return Invert_Surface(force, Is_Inverted() ? -position : position, surface);
}

double C_Force_Model::Current_At(double force, double position) const {
  const CMyArray<double> surface = m_P;
  if (Is_Surface(surface)) return Invert_Surface(force, position, surface);
  const float sum = static_cast<float>(force) + static_cast<float>(Spring_Force(position));
  return static_cast<float>(Force_To_Current(sum));
}

int C_Force_Model::Add_Sample(double y, double x) {
  if (m_SampleY.GetSize() == 0) {
    for (const double seed : {0.0, 1000.0, 2000.0}) {
      m_SampleY.Add(seed);
      m_SampleX.Add(seed);
    }
  }
  if (m_SampleY.GetSize() > Sample_Limit) {
    m_SampleY.DelStartData();
    m_SampleX.DelStartData();
  }
  m_SampleY.Add(y);
  m_SampleX.Add(x);
  return 1;
}

double C_Force_Model::Sample_Value(double x) const {
  CMyArray<double> line;
  double y = 0.0;
  CMyPolyfit().My_PolyFit(m_SampleX, m_SampleY, 1, line);
  CMyPolyfit().My_PolyVal(line, x, y);
  return y;
}

CMyArray<double> C_Force_Model::Friction_Forces(CMyArray<double> positions, FitData fit) const {
  CMyArray<double> ForceData;
  mExpFit().Evaluate(fit, positions, ForceData);
  return ForceData;
}

}  // namespace orsanta
