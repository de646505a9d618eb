// Work in several threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace vekcam {

inline int coreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// Calls job(0) to job(count - 1), at most `threads` at once. Jobs let no exception out.
template <class Job>
void inParallel(int count, int threads, const Job& job) {
  std::atomic<int> next = 0;
  const auto work = [&] {
    for (int i = next++; i < count; i = next++) job(i);
  };
  std::vector<std::jthread> others;
  for (int i = 1; i < std::min(count, threads); ++i) others.emplace_back(work);
  work();
}

/// An executor of the library's: one thread a job.
struct InThreads {
  template <class Job>
  void operator()(int jobs, Job&& job) const {
    inParallel(jobs, jobs, job);
  }
};

}  // namespace vekcam
