// Reads of input channels, as both drive classes make them. Any thread. Count is the number of samples that one read
// takes at most, which is the depth of the status FIFOs that the class reads.
#pragma once

#include <cstdint>

#include "drive/tremalink.h"
#include "support/base/array.h"
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

// samples := all that wait, 65536 at most. Up to three reads 1 ms apart, until one brings a sample; with or_none the
// first that works will do, even an empty one. Returns 1, or 0 and leaves samples as they are when there is none.
inline int Read_All_Samples(int channel, bool or_none, CMyArray<double>& samples) {
  constexpr int Count = 65536;
  constexpr int Tries = 3;
  CMyArray<double> pdata;
  pdata.SetArraySize(Count);
  int nLen = 0;
  int result = 0;
  for (int reads = 1;; ++reads) {
    nLen = 0;
    result = GetInputChannelData(channel, Count, &nLen, pdata.GetData(), nullptr);
    if (or_none ? result == 1 : nLen >= 1) break;
    Sleep(1);
    if (reads >= Tries) return 0;
  }
  if (result != 1 || nLen < 1) return 0;
  pdata.GetSubArray(0, nLen, samples);
  return 1;
}

// A version word: bytes 0-1 are the software version, bytes 2-5 its date.
inline void Split_Version(double word, uint16_t& ver, uint32_t& bcd_date) {
  const auto packed = static_cast<int64_t>(word);
  ver = static_cast<uint16_t>(packed & 0xFFFF);
  bcd_date = static_cast<uint32_t>((packed >> 16) & 0xFFFFFFFF);
}

}  // namespace orsanta
