#include "bench/support.h"

namespace vek::bench {

std::vector<Entry>& entries() {
  static std::vector<Entry> all;
  return all;
}

}  // namespace vek::bench
