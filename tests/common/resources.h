// The table of stations that a host hands over, one record for each CAN id.
#pragma once

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
  std::vector<int> can_ids;
  for (int id = 1; id <= stations; ++id) can_ids.push_back(id);
  return Resource_Table(can_ids);
}

}  // namespace orsanta
