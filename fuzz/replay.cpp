// Feeds every file of a folder to a fuzz target, so that its corpus is an ordinary test: each whole, and cut
// short at every length.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// The first bytes, in memory of their own: what reads beyond them is seen by the sanitizers.
void Feed(std::span<const std::byte> bytes) {
    const std::vector<std::byte> copy(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(copy.data()), copy.size());
}

int Replay(const std::wstring& folder) {
    using namespace skyvault;
    int count = 0;
    for (const std::wstring& name : FindFiles(folder)) {
        const std::wstring path = JoinPath(folder, name);
        if (FolderExists(path)) continue;
        std::vector<std::byte> bytes;
        if (!ReadWholeFile(path, bytes)) {
            std::fprintf(stderr, "cannot read %s\n", ToUtf8(path).c_str());
            return 1;
        }
        std::printf("%s\n", ToUtf8(name).c_str());
        std::fflush(stdout);  // a crash then shows whose it was
        Feed(bytes);
        // At most a thousand lengths of a file.
        const std::size_t step = bytes.size() / 1000 + 1;
        for (std::size_t length = 0; length < bytes.size(); length += step) Feed({bytes.data(), length});
        ++count;
    }
    if (count == 0) std::fprintf(stderr, "no files in %s\n", ToUtf8(folder).c_str());
    return count > 0 ? 0 : 1;
}

}  // namespace

#ifdef _WIN32
int wmain(int argc, wchar_t** argv) {
    return argc == 2 ? Replay(argv[1]) : 2;
}
#else
int main(int argc, char** argv) {
    return argc == 2 ? Replay(skyvault::FromUtf8(argv[1])) : 2;
}
#endif
