#include "tests/campaign/campaign.h"

namespace vek::test {

std::vector<Record> recordsOf(const std::string& family) {
  std::vector<Record> all;
  const auto add = [&](const char* name, std::vector<Record> (*records)()) {
    if (family != "all" && family != name) return;
    for (Record& r : records()) all.push_back(std::move(r));
  };
#define VEK_ADD(family) add(#family, family##Records);
  VEK_EACH_FAMILY(VEK_ADD)
#undef VEK_ADD
  return all;
}

}  // namespace vek::test
