/// Runs a fuzz target on each file of a folder. It stands in for the fuzzer, which needs clang.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "fuzz.h"

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& file : std::filesystem::directory_iterator(argv[i])) {
      std::ostringstream content;
      content << std::ifstream(file.path(), std::ios::binary).rdbuf();
      const std::string input = content.str();
      std::fprintf(stderr, "%s\n", file.path().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
      ++replayed;
    }
  }
  std::fprintf(stderr, "%d inputs replayed\n", replayed);
  return replayed > 0 ? 0 : 1;
}
