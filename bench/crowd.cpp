/// Lets threads start and finish their jobs together.
#include "crowd.h"

Crowd::Crowd(size_t size) {
  pthread_barrier_init(&barrier_, nullptr, static_cast<unsigned>(size + 1));
  for (size_t number = 0; number < size; ++number) {
    threads_.emplace_back([this, number] {
      for (;;) {
        pthread_barrier_wait(&barrier_);
        if (job_ == nullptr) return;
        (*job_)(number);
        pthread_barrier_wait(&barrier_);
      }
    });
  }
}

Crowd::~Crowd() {
  job_ = nullptr;
  pthread_barrier_wait(&barrier_);
  for (std::thread& thread : threads_) thread.join();
  pthread_barrier_destroy(&barrier_);
}

void Crowd::Run(const std::function<void(size_t)>& job) {
  job_ = &job;
  pthread_barrier_wait(&barrier_);
  pthread_barrier_wait(&barrier_);
}
