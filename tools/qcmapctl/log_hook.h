/// What the library has logged. It returns no error codes, but its log lines have them.
#pragma once

#include <functional>
#include <string>

namespace qcmapctl {

/// The errors that were logged on this thread since ForgetErrors, one on each line.
std::string Errors();
/// The last one of them; empty if there is none.
std::string LastError();
/// The last line of any level on this thread.
std::string LastLine();
void ForgetErrors();

/// Has `handler` called when the client logs that it has lost its server, on the thread that logs.
/// A vendor's client may not log that. An empty handler ends this.
void OnServerLost(std::function<void()> handler);

}  // namespace qcmapctl
