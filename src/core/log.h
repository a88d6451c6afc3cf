/// The only road to the system log.
#pragma once

#include <syslog.h>

/// Logs `format`, a string literal, behind the signature of the calling function and the line of
/// the call. A lambda would put its own signature there: never log inside one.
#define SYSLOG(priority, format, ...) \
  ::syslog(priority, "%s %d: " format, __PRETTY_FUNCTION__, __LINE__, ##__VA_ARGS__)
