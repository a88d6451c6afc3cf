/// What the road from a client to the server costs. Each part prints its rows of the table.
#pragma once

#include <process.h>

#include <memory>
#include <string>
#include <vector>

/// Starts the simulated server, which then listens where clients of this program look for it.
std::unique_ptr<Process> StartServer(const std::vector<std::string>& options = {});

/// The time from the start of a server to its first answer, and the time of `qcmapctl status`.
void MeasureStarts();
/// Many events in quick succession to several client programs, one of which does not read them.
void MeasureEventStream();
