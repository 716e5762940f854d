// Feeds every file of a folder to a fuzz target once: replays a corpus where no fuzzer is at hand.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int, char** arguments) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // A block of exactly this size, so that a byte read behind it shows.
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    (void)LLVMFuzzerTestOneInput(exact.data(), exact.size());
    ++files;
  }
  std::printf("%d inputs\n", files);
  return files > 0 ? 0 : 1;
}
