/// Follows a profile's call until it is in a state.
#include "call_change.h"

#include <algorithm>

namespace qcmapctl {

using mox::Result;

CallChange::CallChange(Router& router, uint32_t index, ConnectStatus target,
                       const Direction* direction)
    : router_(router),
      direction_(direction),
      target_(target),
      profile_{index, router.Policy(index)},
      feed_(router.Wrapper()) {}

void CallChange::Add(IPFamily family) {
  Leg leg{family, router_.CallState(profile_.index).Of(family), {}, {}, {}};
  if (direction_ == nullptr) {
    Judge(leg);
  } else if (leg.state == target_) {
    leg.result = std::string("already ") + direction_->word;
  } else {
    const Result result = (router_.Wrapper().*direction_->request)(profile_.index, family);
    if (result != Result::SUCCESS) Explain(leg, result);
  }
  legs_.push_back(std::move(leg));
}

void CallChange::Wait(Clock::time_point deadline) {
  while (IsUnderWay() && Clock::now() < deadline) {
    for (const Event& event : feed_.Take(std::min(deadline, Clock::now() + kCheckEvery))) {
      Note(event);
    }
    const FamilyStates state = router_.CallState(profile_.index);
    for (Leg& leg : legs_) {
      leg.state = state.Of(leg.family);
      Judge(leg);
    }
  }
}

Report CallChange::Conclude(bool may_be_pending) {
  Json json = {{"index", profile_.index}};
  if (direction_ != nullptr) json["handle"] = profile_.policy.profile_handle;
  for (Leg& leg : legs_) {
    if (may_be_pending && !leg.result && !leg.failure) leg.result = "requested";
    if (!leg.result) Fail();
    json[WordOf(leg.family)] = *leg.result;
  }
  return {json, AsSentence("profile {index}:[ ipv4 {ipv4},][ ipv6 {ipv6},]")};
}

bool CallChange::IsUnderWay() const {
  return std::any_of(legs_.begin(), legs_.end(),
                     [](const Leg& leg) { return !leg.result && !leg.failure; });
}

/// Decides what a refused request means. If another program has made the same change first, that is
/// not a failure.
void CallChange::Explain(Leg& leg, Result result) {
  leg.reason = router_.ReasonOfRefusal();
  leg.state = router_.CallState(profile_.index).Of(leg.family);
  // After a failed attempt to connect, the state is unknown and there is nothing to take down.
  const bool nothing_there =
      result == Result::INCOMPATIBLE_STATE && leg.state == ConnectStatus::UNKNOWN;
  if (leg.state == target_ || nothing_there) {
    leg.result = std::string("already ") + direction_->word;
  } else if (leg.state == direction_->moving) {
    leg.seen_moving = true;
  } else {
    leg.failure =
        leg.state == ConnectStatus::DISCONNECTING ? Failure::CALL_GOING_DOWN : direction_->refused;
  }
}

void CallChange::Note(const Event& event) {
  if (direction_ == nullptr) return;
  if (event.profile_handle && *event.profile_handle != profile_.policy.profile_handle) return;
  if (event.code != direction_->done_event && event.code != direction_->failed_event) return;
  for (Leg& leg : legs_) leg.outcome_reported |= leg.family == event.family;
}

void CallChange::Judge(Leg& leg) const {
  if (direction_ == nullptr) {
    // The families must be in the state at the same time.
    leg.result.reset();
    if (leg.state == target_) leg.result = WordOf(target_);
    return;
  }
  if (leg.result || leg.failure) return;
  if (leg.state == target_) {
    leg.result = direction_->word;
  } else if (leg.state == direction_->moving) {
    leg.seen_moving = true;
  } else if (leg.seen_moving || leg.outcome_reported) {
    leg.failure = direction_->failed;
  }
}

void CallChange::Fail() const {
  Failure worst = Failure::TIME_LIMIT;
  Reason reason;
  bool any_done = false;
  std::string text = ProfileName(profile_.index);
  for (const Leg& leg : legs_) {
    text += (&leg == &legs_.front() ? ": " : ", ") + WordOf(leg.family) + " ";
    if (direction_ == nullptr) {
      text += "is " + WordOf(leg.state);
      continue;
    }
    if (leg.result) {
      text += *leg.result;
      any_done = true;
      continue;
    }
    text += std::string("not ") + direction_->word + " (" +
            MessageOf(leg.failure.value_or(Failure::TIME_LIMIT), leg.reason) + ")";
    if (!leg.failure || worst != Failure::TIME_LIMIT) continue;
    worst = *leg.failure;
    reason = leg.reason;
  }
  if (any_done) throw CommandFailed(Failure::PARTLY_DONE, text);
  const bool same = legs_.front().failure == legs_.back().failure;
  if (direction_ != nullptr && same) {
    text = ProfileName(profile_.index) + ": " + WordOf(legs_.front().family);
    if (legs_.size() > 1) text += " and " + WordOf(legs_.back().family);
  }
  throw CommandFailed(worst, text, same ? reason : Reason{});
}

}  // namespace qcmapctl
