// Small files that claim much, real ones that are nearly as small, and what is told of a file without
// decoding it.

#include <gtest/gtest.h>

#include "cli/options.h"
#include "codecs/picture_header.h"
#include "platform/memory_budget.h"
#include "platform/utf8.h"
#include "session/messages.h"
#include "tests/made_files.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

class MemoryLimit {
  public:
    explicit MemoryLimit(std::uint64_t bytes) { SetMemoryBudget(bytes); }
    ~MemoryLimit() { SetMemoryBudget(0); }
};

constexpr std::uint64_t kMega = std::uint64_t{1} << 20;

TEST(HostilePictures, NeededMemoryIsToldBeforeAnyIsAskedFor) {
    const TemporaryFolder folder;
    for (const wchar_t* extension :
         {L"bmp", L"png", L"jpg", L"tif", L"gif", L"tga", L"dds", L"exr", L"hdr"}) {
        const std::wstring path = folder / (std::wstring(L"a.") + extension);
        if (std::wstring(extension) == L"tga") {
            Bytes tga = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 4, 24, 0x20};
            tga.resize(tga.size() + 3 * kMega);
            ASSERT_TRUE(WriteFile(path, tga));
        } else {
            Image picture = Filled(1024, 1024, Rgb8, kOpaqueWhite);
            ASSERT_TRUE(Saved(picture, path));
        }
        PictureFacts facts;
        ASSERT_TRUE(ReadPictureFacts(path, facts).IsDone());
        Image read;
        {
            const MemoryLimit limit(facts.memory);
            ASSERT_TRUE(LoadPicture(path, read).IsDone()) << extension;
            EXPECT_GE(facts.memory, read.ByteCount());
            EXPECT_TRUE(facts.size == (PictureSize{1024, 1024}) && facts.format == read.format &&
                        facts.frameCount == read.frameCount)
                << extension;
        }
        const MemoryLimit limit(kMega);
        const Outcome refused = LoadPicture(path, read);
        EXPECT_EQ(refused.reason, Reason::NeedsMemory) << extension;
        EXPECT_EQ(refused.bytesAllowed, kMega);
        EXPECT_FALSE(read.IsValid());
    }
}

TEST(HostilePictures, NumbersOfAMessageAreNeverFlattering) {
    const struct {
        std::uint64_t needed, allowed;
        std::wstring text;
    } rows[] = {
        {12 << 10, 3 << 10, L"12.0 GB of memory, of which 3.0 GB may be used"},
        {3 * 1024 + 1, 3 * 1024 - 1, L"3.1 GB of memory, of which 2.9 GB may be used"},
        {900, 1, L"900 MB of memory, of which 1 MB may be used"},
    };
    for (const auto& row : rows) {
        Outcome outcome = Failure(Reason::NeedsMemory, L"x.png");
        outcome.bytesNeeded = row.needed * kMega;
        outcome.bytesAllowed = row.allowed * kMega;
        EXPECT_EQ(MessageOf(outcome), L"\"x.png\" needs " + row.text);
    }
}

/// SOI, one frame, so many scans with a byte of data each, EOI.
Bytes MakeJpeg(std::uint8_t kind, std::uint32_t width, std::uint32_t height, int scans,
               std::size_t more = 0) {
    const auto two = [](std::uint32_t value) {
        return Bytes{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    };
    Bytes file = Join({{0xff, 0xd8, 0xff, kind, 0, 17, 8},
                       two(height),
                       two(width),
                       {3, 1, 0x22, 0, 2, 0x11, 0, 3, 0x11, 0}});
    for (int i = 0; i < scans; ++i) {
        file = Join({file, {0xff, 0xda, 0, 12, 3, 1, 0, 2, 0, 3, 0, 0, 63, 0, 1}});
    }
    return Join({file, Bytes(more, 1), {0xff, 0xd9}});
}

TEST(HostilePictures, AJpegHoldsNoMoreBlocksThanBits) {
    // 16 × 16 pixels are six blocks, of two bits each but in progressive files.
    constexpr std::uint8_t kBaseline = 0xc0, kProgressive = 0xc2, kLossless = 0xc3;
    const struct {
        const char* what;
        Bytes file;
        bool sound;
    } rows[] = {
        {"small", MakeJpeg(kBaseline, 16, 16, 1), true},
        {"as flat as can be", MakeJpeg(kBaseline, 1600, 1600, 1, 15000), true},
        {"flatter than can be", MakeJpeg(kBaseline, 1600, 1600, 1, 14900), false},
        {"as flat as can be, progressive", MakeJpeg(kProgressive, 1600, 1600, 1, 7500), true},
        {"flatter than can be, progressive", MakeJpeg(kProgressive, 1600, 1600, 1, 7400), false},
        {"a hundred scans", MakeJpeg(kProgressive, 16, 16, 100), true},
        {"too many scans", MakeJpeg(kProgressive, 16, 16, 101), false},
        {"lossless", MakeJpeg(kLossless, 16, 16, 1), false},
        {"no size", MakeJpeg(kBaseline, 16, 0, 1), false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IsSoundJpeg(ReadJpegStructure(AsBytes(row.file)), row.file.size()), row.sound) << row.what;
    }
    // Cut off with the end marker may be two bytes; before a scan's data there is no picture.
    const Bytes whole = MakeJpeg(kBaseline, 16, 16, 1);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.data(), whole.data() + size);
        EXPECT_EQ(IsSoundJpeg(ReadJpegStructure(AsBytes(cut)), size), size + 2 >= whole.size()) << size;
    }
}

TEST(HostilePictures, FlatPicturesAreBelievedAndEmptyClaimsAreNot) {
    // A real, white PNG of 16384 × 8192 pixels of one bit has 16382 bytes.
    const Bytes flat = FromHex("89504e470d0a1a0a0000000d4948445200004000000020000100000000");
    const PictureHeader header = ReadPictureHeader(AsBytes(flat));
    EXPECT_TRUE(header.sound);
    EXPECT_FALSE(PlausibleSize(30000, 30000, 100));
    EXPECT_LE(header.leastBytes, 16382u);
    EXPECT_GT(header.leastBytes, 16382u / 8 * 7);
    EXPECT_TRUE(MayHoldPicture(header, 16384, 8192, 16382));
    EXPECT_FALSE(MayHoldPicture(header, 16384, 8192, 14000) || MayHoldPicture(header, 30000, 30000, 100));
    Bytes packed = MakeBmp(20000, 20000, 8, {});
    packed[30] = 1;  // in runs
    const TemporaryFolder folder;
    ASSERT_TRUE(WriteFile(folder / L"a.bmp", packed));
    ASSERT_TRUE(WriteFile(folder / L"a.jpg", MakeJpeg(0xc0, 64250, 64250, 1)));
    for (const wchar_t* name : {L"a.bmp", L"a.jpg"}) {
        PictureFacts facts;
        EXPECT_EQ(ReadPictureFacts(folder / name, facts).reason, Reason::CannotOpen);
        EXPECT_FALSE(Loaded(folder / name).IsValid());
    }
}

TEST(HostilePictures, TheOptionTakesUnitsAndNothingElse) {
    const auto memory = [](const wchar_t* text) {
        const Command command = ParseArguments({L"info", L"--memory", text, L"a.png"});
        const auto* options = std::get_if<InfoOptions>(&command);
        return options ? options->memory : 0;
    };
    EXPECT_EQ(memory(L"1536"), 1536u);
    EXPECT_EQ(memory(L"3k"), 3072u);
    EXPECT_EQ(memory(L"1500M"), 1500 * kMega);
    EXPECT_EQ(memory(L"2T"), 2 * kMega * kMega);
    for (const wchar_t* text :
         {L"", L"G", L"0", L"-1", L"1.5G", L"1GB", L"17179869184G", L"99999999999999999999"}) {
        EXPECT_EQ(memory(text), 0u) << ToUtf8(text);
    }
}

TEST(HostilePictures, SeveralReadersShareAPicture) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"a.jpg", L"a.gif"}) {
        Image picture = SmoothPicture(Rgb8);
        ASSERT_TRUE(Saved(picture, folder / name));
        const FileStream other(folder / name, FileUse::ReadShared);
        EXPECT_TRUE(Loaded(folder / name).IsValid()) << name;
    }
}

}  // namespace
}  // namespace skyvault::test
