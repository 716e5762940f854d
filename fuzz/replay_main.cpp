// Replays a corpus in builds without a fuzzer. Passes every file of a folder to the fuzz target once. The last file
// name printed is the input that failed.

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
    std::printf("%s\n", entry.path().filename().string().c_str());
    (void)std::fflush(stdout);
    // A block of exactly this size, so that the address sanitizer sees a read past the end.
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    (void)LLVMFuzzerTestOneInput(exact.data(), exact.size());
    ++files;
  }
  std::printf("%d inputs\n", files);
  return files > 0 ? 0 : 1;
}
