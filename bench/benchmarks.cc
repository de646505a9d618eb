#include "bench/benchmarks.h"

#include <cstdio>
#include <cstdlib>

#include "tests/support/failing_allocator.h"

namespace vek::test {

/// The benchmarks have the library's own allocator, which keeps nothing.
void dropAllocations() {}

}  // namespace vek::test

namespace vek::bench {

Call Benchmark::make(VekiSize size, std::shared_ptr<test::Memory> memory) const {
  if (memory == nullptr) memory = std::make_shared<test::Memory>();
  const auto arguments = std::make_shared<test::Arguments>(size, memory);
  typical.prepare(*arguments);
  if (arguments->call(call) < 0) {
    std::fprintf(stderr, "%s refuses its typical call\n", name.c_str());
    std::exit(1);
  }
  return [arguments, function = call] { arguments->call(function); };
}

double Benchmark::bytesPerPixel() const {
  test::Arguments arguments({64, 48}, std::make_shared<test::Memory>());
  typical.prepare(arguments);
  return arguments.bytes() / (64 * 48);
}

std::vector<Benchmark> benchmarks(const std::string& filter) {
  std::vector<Benchmark> all;
  const auto add = [&](const std::string& family, const test::Record& record) {
    std::vector<std::string> functions = record.also;
    functions.insert(functions.begin(), record.name);
    for (const std::string& function : functions) {
      for (const test::Typical& typical : record.typical) {
        const std::string name =
            typical.variant.empty() ? function : function + "/" + typical.variant;
        if (name.find(filter) == std::string::npos) continue;
        all.push_back({name, function, family, record.call, typical});
      }
    }
  };
#define VEK_ADD(family) \
  for (const test::Record& record : test::recordsOf(#family)) add(#family, record);
  VEK_EACH_FAMILY(VEK_ADD)
#undef VEK_ADD
  return all;
}

}  // namespace vek::bench
