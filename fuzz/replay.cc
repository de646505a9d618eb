// Runs a fuzz target on files: all those of the directories named, or the files themselves.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  fprintf(stderr, "%s\n", path.c_str());
  return LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int count, char** arguments) {
  int inputs = 0;
  for (int i = 1; i < count; ++i) {
    if (!std::filesystem::is_directory(arguments[i])) {
      replay(arguments[i]), ++inputs;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
      replay(entry.path()), ++inputs;
    }
  }
  fprintf(stderr, "%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}
