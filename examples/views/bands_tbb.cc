// A picture is converted in bands by oneTBB, whose parallel_for is all that an executor has to be.
#include <tbb/parallel_for.h>

#include "bands.h"

int main() {
  return sameInBands([](int jobs, const auto& job) { tbb::parallel_for(0, jobs, job); });
}
