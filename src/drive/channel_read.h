// Reads of single values from input channels, as both drive classes make them. Any thread. Count is the number of
// samples that one read takes at most, which is the depth of the status FIFOs that the class reads.
#pragma once

#include <cstdint>

#include "drive/tremalink.h"
#include "support/time/clock.h"

namespace orsanta {

// One read without a retry: value := the newest of the samples that wait. Returns 1, or 0 when none does.
template <int Count>
int Read_Newest_Sample(int channel, double& value) {
  double pdata[Count];
  int nLen = 0;
  if (GetInputChannelData(channel, Count, &nLen, pdata, nullptr) == 0 || nLen < 1) return 0;
  value = pdata[nLen - 1];
  return 1;
}

// value := from a FIFO of the depth Count a sample that is fresh, not an old one out of a full FIFO. A deeper FIFO that
// nobody read for a while hands out its old samples first. Reads 1 ms apart; returns 0 when more than `tries` of them
// were empty.
template <int Count>
int Read_Fresh_Sample(int channel, int tries, double& value) {
  double pdata[Count];
  int nLen = 0;
  int result = 0;
  const auto read = [&] {
    nLen = 0;
    result = GetInputChannelData(channel, Count, &nLen, pdata, nullptr);
    return nLen >= 1;
  };
  for (int empty_reads = 0; !read();) {
    ++empty_reads;
    Sleep(1);
    if (empty_reads > tries) return 0;
  }
  if (nLen == Count) {
    // The FIFO was full and dropped what came after, so that even its newest sample may be old. Wait for one that is
    // not.
    for (int reads = 0; reads <= tries; ++reads) {
      Sleep(1);
      if (read()) break;
    }
  }
  if (result == 0 || nLen < 1) return 0;
  value = pdata[nLen - 1];
  return 1;
}

// A version word: bytes 0-1 are the software version, bytes 2-5 its date.
inline void Split_Version(double word, uint16_t& ver, uint32_t& bcd_date) {
  const auto packed = static_cast<int64_t>(word);
  ver = static_cast<uint16_t>(packed & 0xFFFF);
  bcd_date = static_cast<uint32_t>((packed >> 16) & 0xFFFFFFFF);
}

}  // namespace orsanta
