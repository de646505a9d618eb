// The benchmarks: every typical call of the campaign's records.
#pragma once

#include <string>
#include <vector>

#include "bench/support.h"
#include "tests/campaign/campaign.h"

namespace vek::bench {

inline constexpr VekiSize standardSizes[] = {{64, 48}, {320, 240}, {1280, 720}, {1920, 1080}};

struct Benchmark {
  std::string name;      ///< the exported function, and "/variant" where it has several
  std::string function;  ///< the exported function
  std::string family;
  test::Call call;
  test::Typical typical;

  /// The call for images of a size, in memory that it shares with other calls if given.
  Call make(VekiSize size, std::shared_ptr<test::Memory> memory = nullptr) const;

  /// What a call reads and writes for each pixel.
  double bytesPerPixel() const;
};

/// Those whose names contain `filter`. What runs several functions at once, like the allocation and
/// release of a state, is listed under the name of each.
std::vector<Benchmark> benchmarks(const std::string& filter = "");

}  // namespace vek::bench
