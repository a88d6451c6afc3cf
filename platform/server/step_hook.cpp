/// Reads QCMAP_TEST_STEP and does what it asks.
#include "server/step_hook.h"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "numbers/parse_number.h"
#include "protocol/messages.h"

namespace sim {
namespace {

/// In the order of the enumerators.
constexpr const char* kSteps[] = {"accepted", "opened", "read", "carried-out", "replied"};
constexpr const char* kActions[] = {"stop", "kill", "exit", "close"};

template <size_t kCount>
size_t IndexOf(const std::string& word, const char* const (&words)[kCount]) {
  const auto* const found = std::find(std::begin(words), std::end(words), word);
  if (found == std::end(words))
    throw std::runtime_error("QCMAP_TEST_STEP: '" + word + "' is unknown");
  return static_cast<size_t>(found - words);
}

}  // namespace

std::unique_ptr<StepHook> StepHook::FromEnvironment() {
  const char* const text = std::getenv("QCMAP_TEST_STEP");
  if (text == nullptr) return nullptr;
  std::istringstream rest(text);
  std::vector<std::string> words;
  for (std::string word; std::getline(rest, word, ':');) words.push_back(word);
  words.resize(4);
  auto hook = std::make_unique<StepHook>();
  hook->step_ = static_cast<Step>(IndexOf(words[0], kSteps));
  hook->action_ = static_cast<Action>(IndexOf(words[1], kActions));
  if (!words[2].empty()) hook->request_ = static_cast<uint32_t>(IndexOf(words[2], kMessageNames));
  if (!words[3].empty() &&
      (!ParseNumber(words[3], UINT64_MAX, hook->times_left_) || hook->times_left_ == 0))
    throw std::runtime_error("QCMAP_TEST_STEP: the count is not a number above 0");
  return hook;
}

bool StepHook::Reach(Step step, uint32_t request) {
  const bool opens = step == Step::kAccepted || step == Step::kOpened;
  const bool matches =
      request_ ? request == *request_ : opens || request != message::OpenSession::kId;
  if (step != step_ || !matches || times_left_ == 0 || --times_left_ > 0) return false;
  switch (action_) {
    case Action::kStop:
      ::raise(SIGSTOP);
      return false;
    case Action::kKill:
      ::raise(SIGKILL);
      return false;
    case Action::kExit:
      std::exit(0);
    case Action::kClose:
      return true;
  }
  return false;
}

}  // namespace sim
