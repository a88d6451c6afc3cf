/// Threads that do the same thing at the same time.
#pragma once

#include <pthread.h>

#include <functional>
#include <thread>
#include <vector>

/// The threads are kept from one job to the next, so that a job does not include starting them.
class Crowd {
 public:
  explicit Crowd(size_t size);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  /// Runs `job` in each thread, with the number of the thread, and waits until all are done.
  void Run(const std::function<void(size_t)>& job);

 private:
  pthread_barrier_t barrier_;
  /// Null when the threads are to end.
  const std::function<void(size_t)>* job_ = nullptr;
  std::vector<std::thread> threads_;
};
