// The table of stations that a host hands over, one record for each CAN id.
#pragma once

#include <vector>

#include "orsanta/orsanta.h"
#include "support/array.h"

namespace orsanta {

inline CMyArray<VCM_Resource_struct> Resource_Table(const std::vector<int>& can_ids) {
  CMyArray<VCM_Resource_struct> records;
  for (const int id : can_ids) {
    const int place = records.GetSize() + 1;
    records.Add({id, place, place, 2 * place, 2 * place + 1, 1});
  }
  return records;
}

}  // namespace orsanta
