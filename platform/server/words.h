/// The words of a command, as a person or a script has written them.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace sim {

/// A number of times: until it is taken back.
constexpr uint64_t kUntilHealed = UINT64_MAX;

/// Says what is wrong with a command, which has then changed nothing.
struct WrongCommand : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads one word after the other. Each function throws WrongCommand when the next word is missing
/// or is not what the function reads. A command reads all its words before it changes anything.
class Words {
 public:
  explicit Words(const std::string& line);
  /// Splits the words that are left where they have a `separator`, too.
  void SplitAt(char separator);

  bool HasMore() const { return next_ < words_.size(); }
  std::string Next();
  /// A number, decimal or hexadecimal after "0x".
  uint64_t Number(uint64_t min, uint64_t max);
  /// A number with the unit ms, s, min or h.
  std::chrono::milliseconds Duration();
  /// The place of the next word in `known`. `what` says what they are.
  size_t OneOf(const char* what, const std::vector<const char*>& known);
  /// How often something is to happen: a number above 0, or kUntilHealed when no word is left.
  uint64_t Times() { return HasMore() ? Number(1, kUntilHealed - 1) : kUntilHealed; }
  bool OnOrOff() { return OneOf("switch", {"off", "on"}) == 1; }
  /// There must be no word left.
  void End() const;

 private:
  std::vector<std::string> words_;
  size_t next_ = 0;
};

}  // namespace sim
