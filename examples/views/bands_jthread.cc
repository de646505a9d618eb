// A picture is converted in bands by threads of the standard library (C++20).
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "bands.h"

namespace {

/// An executor: each thread takes the next job that is left. The first exception comes out.
struct Threads {
  int count;

  template <class Job>
  void operator()(int jobs, const Job& job) const {
    std::atomic<int> next = 0;
    std::exception_ptr failure;
    std::once_flag failed;
    const auto work = [&] {
      try {
        for (int i = next++; i < jobs; i = next++) job(i);
      } catch (...) {
        std::call_once(failed, [&] { failure = std::current_exception(); });
      }
    };
    {
      std::vector<std::jthread> threads;
      for (int i = 1; i < count && i < jobs; ++i) threads.emplace_back(work);
      work();
    }
    if (failure) std::rethrow_exception(failure);
  }
};

}  // namespace

int main() {
  const unsigned processors = std::thread::hardware_concurrency();
  return sameInBands(Threads{processors == 0 ? 2 : static_cast<int>(processors)});
}
