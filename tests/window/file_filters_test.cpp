// What the file dialogs offer, and the extensions they give.

#include "app/file_filters.h"

#include <gtest/gtest.h>

namespace skyvault {
namespace {

TEST(FileFilters, PatternListsAreCheckedForTheirForm) {
    struct Row {
        const wchar_t* patterns;
        bool wellFormed;
    };
    for (const Row& row :
         {Row{L"*.BMP;*.JP2;", true}, Row{L"", true}, Row{L"*.BMP;*.GIF", false}, Row{L"*.BMP;.GIF;", false},
          Row{L"*BMP;*.GIF;", false}, Row{L"*.bmp;", false}, Row{L"*.BM P;", false}, Row{L"*.B_P;", false}}) {
        EXPECT_EQ(IsWellFormedPatternList(row.patterns), row.wellFormed) << row.patterns;
    }
}

TEST(FileFilters, OpenListHoldsOwnAndCodecKindsEachOnce) {
    const std::wstring filter = BuildPictureOpenFilter({L"PNG", L"ARW", L"ODD-ONE", L"JPG", L"ARW"});
    const auto count = [&](const wchar_t* pattern) {
        int found = 0;
        for (auto at = filter.find(pattern); at != std::wstring::npos; at = filter.find(pattern, at + 1))
            ++found;
        return found;
    };
    for (const wchar_t* pattern :
         {L"*.PNG;", L"*.ARW;", L"*.JPG;", L"*.TGA;", L"*.TIFF;", L"*.BMP;", L"*.GIF;"}) {
        EXPECT_EQ(count(pattern), 1) << pattern;
    }
    EXPECT_EQ(count(L"ODD"), 0);
    EXPECT_TRUE(BuildPictureOpenFilter({}).empty()) << "without codecs there is no list";
}

TEST(FileFilters, ExtensionIsGivenOnceAndTakesTheOldOnesPlace) {
    struct Row {
        const wchar_t* chosen;
        int filter;
        const wchar_t* path;
    };
    for (const Row& row :
         {Row{L"C:\\a\\pano", 5, L"C:\\a\\pano.png"}, Row{L"C:\\a\\pano.PNG", 5, L"C:\\a\\pano.png"},
          Row{L"C:\\a\\pano.jpg", 5, L"C:\\a\\pano.png"},
          Row{L"C:\\a\\pano v1.2", 4, L"C:\\a\\pano v1.2.jpg"},
          Row{L"C:\\my.jpg\\pano", 1, L"C:\\my.jpg\\pano.bmp"}, Row{L"pano", 2, L"pano.dds"},
          Row{L"pano", 3, L"pano.gif"}, Row{L"pano", 6, L"pano.tif"}, Row{L"pano", 0, L"pano.jpg"},
          Row{L"pano", 7, L"pano.jpg"}}) {
        EXPECT_EQ(GiveExtension(row.chosen, PictureSaveExtension(row.filter)), row.path) << row.filter;
    }
}

}  // namespace
}  // namespace skyvault
