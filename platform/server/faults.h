/// What goes wrong on purpose with requests, replies and indications.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "server/words.h"

namespace sim {

/// In the order of the names in faults.cpp.
enum FaultKind : size_t {
  /// The request is refused, and nothing changes. The argument is the error.
  kFail,
  /// The request is held for so many milliseconds before it is carried out.
  kLate,
  /// The reply is held for so many milliseconds.
  kLateReply,
  /// The request is neither carried out nor answered.
  kHang,
  /// A part of the reply is wrong. The argument is a GarbledPart.
  kGarble,
  /// Only half of the reply is sent.
  kTruncate,
  /// The reply or the indication is sent twice.
  kRepeat,
  /// The server dies. The argument is a Step.
  kDie,
  /// The server stops until it is continued. The argument is a Step.
  kStop,
  /// The indication is not sent.
  kLose,
  /// The indication is held for so many milliseconds. Those after it overtake it.
  kDelay,
  /// The indication ends within its first element.
  kMalform,
  /// The indication carries the handle of another client.
  kMisdirect,
  kFaultKinds
};
enum GarbledPart : uint64_t { kSize = 1, kId, kTransaction, kRecord };
/// How far the server has come with a request: before or after it is carried out, or replied. Or
/// with a connection: before or after it is accepted.
enum Step : uint64_t { kBefore = 1, kAfter, kReplied };

/// The arguments of the faults that befall one request, indication or connection, by kind. 0 where
/// there is no such fault.
using Befalling = std::array<uint64_t, kFaultKinds>;

const char* NameOfFault(FaultKind kind);

/// The faults that have been asked for.
class Faults {
 public:
  /// Adds a fault: its target, its argument if it has one, and how often it is to happen. It
  /// replaces an earlier one of its kind and target. Throws WrongCommand.
  void Add(const std::string& kind, Words words);
  /// Takes back the faults of a target, or all faults when no target is named.
  void Heal(Words words);

  /// The names of all targets, in two lines.
  static std::string Targets();

  bool AreNone() const { return faults_.empty(); }
  /// The faults that befall a request with this id. Each counts as having happened.
  std::optional<Befalling> TakeForRequest(uint32_t id) {
    if (AreNone()) return std::nullopt;
    return Take(id, kEachRequest);
  }
  /// The faults that befall the next connection.
  Befalling TakeForConnection() { return Take(kConnection, kConnection); }
  Befalling TakeForIndication(uint32_t id) { return Take(kIndication | id, kEachIndication); }

 private:
  /// The id of a request, or kIndication and the id of an indication, or one of the others.
  using Target = uint64_t;
  static constexpr Target kIndication = uint64_t{1} << 32;
  static constexpr Target kEachRequest = uint64_t{1} << 33, kEachIndication = uint64_t{1} << 34;
  static constexpr Target kConnection = uint64_t{1} << 35;
  struct Fault {
    FaultKind kind;
    Target target;
    uint64_t argument;
    uint64_t times_left;
  };
  /// `kinds` says what the target may be.
  static Target ReadTarget(Words& words, unsigned kinds);
  Befalling Take(Target target, Target each);

  std::vector<Fault> faults_;
};

/// Ends or stops the server when a fault asks for that at this step.
void Reach(Step step, const Befalling& faults);
/// Changes a reply as its faults ask.
void Spoil(std::string& reply, const Befalling& faults);

}  // namespace sim
