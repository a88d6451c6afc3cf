/// Compares what something takes with what a reference takes, and prints both.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

inline double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

template <typename Action>
double SecondsOf(const Action& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Medians over all rounds. The ratio is taken within each round, so that whatever else the machine
/// does affects both sides alike.
struct Comparison {
  double own_us, reference_us, ratio;
};

/// Runs both actions in turn, first one and then the other going first. Each of them stands for
/// `count` operations.
template <typename Own, typename Reference>
Comparison Compare(int rounds, int count, const Own& own, const Reference& reference) {
  own();
  reference();
  std::vector<double> owns, references, ratios;
  for (int round = 0; round < rounds; ++round) {
    double own_s = 0, reference_s = 0;
    if (round % 2 == 0) own_s = SecondsOf(own);
    reference_s = SecondsOf(reference);
    if (round % 2 != 0) own_s = SecondsOf(own);
    owns.push_back(own_s * 1e6 / count);
    references.push_back(reference_s * 1e6 / count);
    ratios.push_back(own_s / reference_s);
  }
  return {Median(owns), Median(references), Median(ratios)};
}

inline void Print(const std::string& name, const Comparison& comparison) {
  std::printf("%-45s %12.1f %9.1f %6.2f\n", name.c_str(), comparison.own_us,
              comparison.reference_us, comparison.ratio);
  std::fflush(stdout);
}
inline void Print(const std::string& name, double value) {
  std::printf("%-45s %12.1f\n", name.c_str(), value);
  std::fflush(stdout);
}
