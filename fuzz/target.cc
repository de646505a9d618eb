// A fuzz target over one family's records (tests/campaign): the input's bytes are what calls are
// drawn from. Built for libFuzzer, or with replay.cc for any compiler.
#include <cstdio>
#include <cstdlib>

#include "tests/campaign/examination.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vek::test;
  static const std::vector<Record> records = recordsOf(VEK_FUZZ_FAMILY);
  Random random(data, size);
  for (int calls = 0; calls < 6 && !random.usedUp(); ++calls) {
    const Record& record = records[static_cast<size_t>(random.in(0, int(records.size()) - 1))];
    const std::string wrong = runCase(record, random);
    if (wrong.empty()) continue;
    fprintf(stderr, "%s: %s\n", record.name.c_str(), wrong.c_str());
    abort();
  }
  return 0;
}
