/// Reads faults from commands and makes them happen to replies.
#include "server/faults.h"

#include <signal.h>

#include <algorithm>
#include <iterator>

#include "protocol/messages.h"
#include "records/table.h"

namespace sim {
namespace {

constexpr uint64_t kMaxMs = uint64_t{3600} * 1000;

/// What a fault can befall.
constexpr unsigned kRequests = 1, kIndications = 2, kConnections = 4;
struct Kind {
  const char* name;
  unsigned befalls;
};
/// By FaultKind.
constexpr Kind kKinds[] = {{"fail", kRequests},
                           {"late", kRequests},
                           {"late-reply", kRequests},
                           {"hang", kRequests},
                           {"garble", kRequests},
                           {"truncate", kRequests},
                           {"repeat", kRequests | kIndications},
                           {"die", kRequests | kConnections},
                           {"stop", kRequests | kConnections},
                           {"lose", kIndications},
                           {"delay", kIndications},
                           {"malform", kIndications},
                           {"misdirect", kIndications}};
static_assert(std::size(kKinds) == kFaultKinds);

constexpr auto& kIndicationNames = seam::kEnumerators<seam::IndicationId>;

uint64_t ReadArgument(FaultKind kind, bool of_connection, Words& words) {
  std::vector<const char*> steps = {"before", "after"};
  if (!of_connection) steps.push_back("replied");
  switch (kind) {
    case kFail:
      return words.HasMore() ? words.Number(1, INT32_MAX) : uint64_t{QMI_ERR_INTERNAL_V01};
    case kLate:
    case kLateReply:
    case kDelay:
      return words.Number(1, kMaxMs);
    case kGarble:
      return kSize + words.OneOf("part", {"size", "id", "transaction", "record"});
    case kDie:
    case kStop:
      return kBefore + words.OneOf("step", steps);
    default:
      return 1;
  }
}

}  // namespace

const char* NameOfFault(FaultKind kind) {
  return kKinds[kind].name;
}

void Faults::Add(const std::string& kind, Words words) {
  const auto is_named = [&](const Kind& known) { return kind == known.name; };
  const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds), is_named);
  Fault fault{};
  fault.kind = static_cast<FaultKind>(found - kKinds);
  fault.target = ReadTarget(words, found->befalls);
  fault.argument = ReadArgument(fault.kind, fault.target == kConnection, words);
  fault.times_left = words.Times();
  words.End();
  for (Fault& other : faults_) {
    if (other.kind != fault.kind || other.target != fault.target) continue;
    other = fault;
    return;
  }
  faults_.push_back(fault);
}

void Faults::Heal(Words words) {
  if (!words.HasMore()) return faults_.clear();
  const Target target = ReadTarget(words, kRequests | kIndications | kConnections);
  words.End();
  const auto is_its = [&](const Fault& fault) { return fault.target == target; };
  faults_.erase(std::remove_if(faults_.begin(), faults_.end(), is_its), faults_.end());
}

Faults::Target Faults::ReadTarget(Words& words, unsigned kinds) {
  std::vector<const char*> names;
  std::vector<Target> targets;
  const auto offer = [&](const char* name, Target target) {
    names.push_back(name);
    targets.push_back(target);
  };
  if ((kinds & kRequests) != 0) {
    for (uint32_t id = 0; id < std::size(kMessageNames); ++id) offer(kMessageNames[id], id);
    offer("all", kEachRequest);
  }
  if ((kinds & kConnections) != 0) offer("connection", kConnection);
  if ((kinds & kIndications) != 0) {
    for (const auto& [id, name] : kIndicationNames)
      offer(name, kIndication | static_cast<Target>(id));
    offer("indications", kEachIndication);
  }
  return targets[words.OneOf((kinds & kRequests) != 0 ? "request" : "indication", names)];
}

std::string Faults::Targets() {
  std::string text = "REQUEST is all";
  for (const char* name : kMessageNames) text += std::string(", ") + name;
  text += "\nINDICATION is indications";
  for (const auto& [id, name] : kIndicationNames) text += std::string(", ") + name;
  return text + "\n";
}

Befalling Faults::Take(Target target, Target each) {
  Befalling taken{};
  for (auto fault = faults_.begin(); fault != faults_.end();) {
    const bool matches =
        fault->target == target || (fault->target == each && target != message::OpenSession::kId);
    if (matches && (taken[fault->kind] == 0 || fault->target == target))
      taken[fault->kind] = fault->argument;
    const bool is_over = matches && fault->times_left != kUntilHealed && --fault->times_left == 0;
    fault = is_over ? faults_.erase(fault) : fault + 1;
  }
  return taken;
}

void Reach(Step step, const Befalling& faults) {
  if (faults[kDie] == step) ::raise(SIGKILL);
  if (faults[kStop] == step) ::raise(SIGSTOP);
}

void Spoil(std::string& reply, const Befalling& faults) {
  Header header;
  reply.copy(reinterpret_cast<char*>(&header), sizeof header);
  switch (faults[kGarble]) {
    case kSize:
      ++header.length;
      break;
    case kId:
      ++header.id;
      break;
    case kTransaction:
      header.transaction ^= 0x80000000U;
      break;
    case kRecord:
      for (size_t i = sizeof header; i < reply.size(); ++i) reply[i] = static_cast<char>(~reply[i]);
      break;
    default:
      break;
  }
  reply.replace(0, sizeof header, reinterpret_cast<const char*>(&header), sizeof header);
  if (faults[kTruncate] != 0) reply.resize(reply.size() / 2);
}

}  // namespace sim
