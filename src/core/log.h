/// The only way to the system log.
#pragma once

#include <syslog.h>

/// Logs `format`, a string literal, after the signature of the calling function and the line of the
/// call. Never log inside a lambda, which would put its own signature there.
#define SYSLOG(priority, format, ...) \
  ::syslog(priority, "%s %d: " format, __PRETTY_FUNCTION__, __LINE__, ##__VA_ARGS__)
