/// Usage: uplink [TIMES]. Ends when the call has come up so many times, by default once.
#include "uplink.h"

#include <cstdlib>

int main(int argc, char** argv) {
  Uplink uplink(1);
  return uplink.Start() && uplink.WaitFor(argc > 1 ? std::atoi(argv[1]) : 1) ? 0 : 1;
}
