// Feeds every file of a folder to a fuzz target, so that its corpus is an ordinary test.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

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
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
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
