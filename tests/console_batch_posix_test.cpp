// Batches into a disk that is full or takes nothing: a small file system of the test's own.
#include <gtest/gtest.h>

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

/// Runs a shell script in a name space of its own, where it may mount; arguments are its $1, $2 …
ProgramResult RunUnshared(const std::wstring& script, std::vector<std::wstring> arguments) {
    arguments.insert(arguments.begin(), {L"-rm", L"/bin/sh", L"-c", script, L"sh"});
    return ChildProcess(L"/usr/bin/unshare", arguments).Wait();
}

/// $1: mount options, $2: source folder, $3: destination folder, $4: the program. Lists what is in the
/// destination at the end, with sizes.
constexpr const wchar_t* kBatchIntoMount =
    LR"(mount -t tmpfs -o "$1" none "$3" || exit 77
"$4" batch --from equirectangular --to strip --extension bmp --set Resolution0=0 "$2" "$3"
echo "status $?"
cd "$3" && stat -c '%n %s' * .[!.]* 2>/dev/null
exit 0)";

TEST(ConsoleBatchOnLinux, AFullOrReadOnlyDiskLeavesNothingHalfWritten) {
    const TemporaryFolder folder;
    const std::wstring in = folder / L"in", out = folder / L"out";
    const ProgramResult probe = RunUnshared(L"mount -t tmpfs none \"$1\"", {folder.Path()});
    if (probe.exitStatus != 0) GTEST_SKIP() << "nothing can be mounted: " << probe.err;
    ASSERT_TRUE(CreateFolder(in) && CreateFolder(out));
    for (const wchar_t* name : {L"a.bmp", L"b.bmp", L"d.bmp"}) {
        // Strips of 6 × 256 × 256 (b: 6 × 8 × 8).
        const std::uint32_t height = *name == L'b' ? 16 : 512;
        Image picture = RandomImage(2 * height, height, PixelFormat::Rgb8);
        ASSERT_TRUE(Saved(picture, JoinPath(in, name)));
    }
    folder.Write(L"in/c.bmp", "broken");
    const std::string large = " 1179702\n", small = " 1206\n";
    const struct {
        const wchar_t* options;
        std::string status, summary, files;
    } rows[] = {
        // Room for one of the two large ones.
        {L"size=1600k", "status 1\n", "2 converted, 2 failed, 0 skipped\n",
         "a.bmp" + large + "b.bmp" + small},
        {L"size=100k", "status 1\n", "1 converted, 3 failed, 0 skipped\n", "b.bmp" + small},
        {L"ro", "status 1\n", "0 converted, 4 failed, 0 skipped\n", ""},
        {L"size=16m", "status 1\n", "3 converted, 1 failed, 0 skipped\n",
         "a.bmp" + large + "b.bmp" + small + "d.bmp" + large},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.options));
        const ProgramResult result =
            RunUnshared(kBatchIntoMount, {row.options, in, out, ConsoleProgramPath()});
        ASSERT_EQ(result.exitStatus, 0) << result.err;
        const std::size_t summary = result.out.find(row.summary);
        ASSERT_NE(summary, std::string::npos) << result.out;
        EXPECT_EQ(result.out.substr(summary + row.summary.size()), row.status + row.files) << result.err;
        EXPECT_NE(result.err.find("Could not open \"" + ToUtf8(JoinPath(in, L"c.bmp"))), std::string::npos);
    }
}

}  // namespace
}  // namespace skyvault::test
