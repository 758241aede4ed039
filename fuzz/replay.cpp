// Feeds every file of a folder to a fuzz target, so that its corpus is an ordinary test: each whole, and cut
// short at every length.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// The first bytes, in memory of their own: what reads beyond them is seen by the sanitizers.
void Feed(const std::vector<char>& bytes, std::size_t count) {
    const std::vector<std::uint8_t> copy(bytes.data(), bytes.data() + count);
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::printf("%s\n", entry.path().filename().string().c_str());
        std::fflush(stdout);  // a crash then shows whose it was
        std::ifstream file(entry.path(), std::ios::binary);
        if (!file) return 1;
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        Feed(bytes, bytes.size());
        // At most a thousand lengths of a file.
        const std::size_t step = bytes.size() / 1000 + 1;
        for (std::size_t length = 0; length < bytes.size(); length += step) Feed(bytes, length);
        ++count;
    }
    if (count == 0) std::fprintf(stderr, "no files in %s\n", argv[1]);
    return count > 0 ? 0 : 1;
}
