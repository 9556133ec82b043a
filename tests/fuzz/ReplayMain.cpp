// Runs a fuzz target over saved inputs without libFuzzer, so that normal builds (any
// compiler) replay every corpus and every input that once crashed a target. Arguments
// are files or directories (their regular files, hidden ones aside, in name order); a
// directory that does not exist holds nothing. A failing input aborts the program.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

namespace fs = std::filesystem;

void collect(const fs::path& path, std::vector<fs::path>& inputs) {
  std::error_code error;
  if (!fs::is_directory(path, error)) {
    if (fs::exists(path, error)) inputs.push_back(path);
    return;
  }
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
    if (entry.is_regular_file() && entry.path().filename().string().front() != '.') files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  inputs.insert(inputs.end(), files.begin(), files.end());
}

}  // namespace

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) collect(argv[i], inputs);
  for (const fs::path& input : inputs) {
    std::ifstream file(input, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // A copy of its own, so that AddressSanitizer sees a read past the input's end.
    std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    std::fprintf(stderr, "%s\n", input.c_str());
    LLVMFuzzerTestOneInput(data.data(), data.size());
  }
  std::printf("replayed %zu inputs\n", inputs.size());
  return 0;
}
