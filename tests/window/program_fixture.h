// The program in this process with a picture whose colours say where in it they are: what a pixel on the
// screen shows can be read off it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "codecs/picture_files.h"
#include "resources/resource_ids.h"
#include "settings/panorama_format.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {

/// Ten pixels to a degree.
inline constexpr int kPlaceWidth = 3600, kPlaceHeight = 1800;

/// A pixel of the picture: twelve bits of column and twelve of row are its colour.
struct Place {
    int column = 0, row = 0;

    static Place Of(const Color8& colour) {
        return {colour.red << 4 | colour.green >> 4, (colour.green & 15) << 8 | colour.blue};
    }
    Color8 Colour() const {
        return {static_cast<std::uint8_t>(column >> 4),
                static_cast<std::uint8_t>((column & 15) << 4 | row >> 8),
                static_cast<std::uint8_t>(row & 255), 255};
    }
    /// Rounding may choose the neighbour.
    bool IsNear(const Place& other) const {
        const int columns = std::abs(column - other.column);
        return (columns <= 1 || columns >= kPlaceWidth - 1) && std::abs(row - other.row) <= 1;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Place& place) {
    return out << '(' << place.column << ',' << place.row << ')';
}

inline constexpr const wchar_t* kPlaceTitle =
    L"Skyvault - place.bmp Equirectangular (3600 x 1800) LDR 24 bpp RGB int";

// The equirectangular view is 1000 × 500 in the middle of the client area and has its front one row above its
// middle; the preview is 1000 × 562, with a focal length of 200, and has it in the middle.
inline constexpr POINT kFront{500, 349}, kPreviewFront{500, 350};
/// 250 pixels beside the middle of the preview are atan(250 / 200) to the right.
inline constexpr POINT kBeside{750, 350};
inline constexpr Place kFrontPlace{1800, 900}, kBesidePlace{1800 + 513, 900};

class ProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        Image picture(kPlaceWidth, kPlaceHeight, PixelFormat::Rgb8);
        for (int row = 0; row < kPlaceHeight; ++row)
            for (int column = 0; column < kPlaceWidth; ++column)
                picture.SetPixel(column, row, Place{column, row}.Colour());
        ASSERT_TRUE(Saved(picture, folder_ / L"place.bmp"));
    }

    /// Starts the program with the settings.
    bool Start(int show = SW_SHOWNORMAL) {
        program_.reset();
        PutSettings(&settings_);
        program_.emplace(show);
        return Window() != nullptr;
    }
    /// And imports the picture through menu and dialog; false when that did not lead to its title.
    bool StartWithPlace() {
        if (!Start()) return false;
        const HWND dialog = program_->Open(IDM_IMPORT_EQUIRECTANGULAR, L"Select equirectangular");
        return AnswerFileDialog(dialog, folder_ / L"place.bmp") &&
               Eventually([&] { return Title() == kPlaceTitle; });
    }

    HWND Window() const { return program_->Window(); }
    std::wstring Title() const { return TextOf(Window()); }
    void Command(UINT id) const { program_->Command(id); }
    testing::AssertionResult BecomesChecked(UINT command, bool checked = true) const {
        const bool done = Eventually([&] { return program_->IsChecked(command) == checked; });
        return testing::AssertionResult(done) << command;
    }
    /// Waits until the pixel has the colour, or has it no more.
    bool IsColoured(int x, int y, const Color8& colour, bool has = true) const {
        return Eventually([&] { return (PixelAt(Window(), x, y) == colour) == has; });
    }
    /// Waits until the pixel shows the place.
    testing::AssertionResult Shows(POINT at, const Place& place) const {
        const auto shown = [&] { return Place::Of(PixelAt(Window(), at.x, at.y)); };
        const bool done = Eventually([&] { return shown().IsNear(place); });
        return testing::AssertionResult(done) << shown() << " is at " << at.x << ',' << at.y;
    }

    const TemporaryFolder folder_;
    AppState settings_;
    std::optional<RunningProgram> program_;
};

}  // namespace skyvault::test
