// The table of stations that a host hands over, one record for each CAN id.
#pragma once

#include <numeric>
#include <vector>

#include "orsanta/orsanta.h"
#include "support/base/array.h"

namespace orsanta {

inline CMyArray<VCM_Resource_struct> Resource_Table(const std::vector<int>& can_ids) {
  CMyArray<VCM_Resource_struct> records;
  for (const int id : can_ids) {
    const int place = records.GetSize() + 1;
    records.Add({id, place, place, 2 * place, 2 * place + 1, 1});
  }
  return records;
}

// Stations on the CAN ids 1, 2, ...
inline CMyArray<VCM_Resource_struct> Numbered_Resources(int stations) {
  std::vector<int> can_ids(static_cast<size_t>(stations));
  std::iota(can_ids.begin(), can_ids.end(), 1);
  return Resource_Table(can_ids);
}

}  // namespace orsanta
