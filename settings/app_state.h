// Everything the user can set, in one plain record with its defaults; the engine sees only the part it reads.
//
// Values come from the settings file unchecked: indices are checked where they are used.
#pragma once

#include <cstdint>
#include <string>

#include "image/pixel.h"

namespace skyvault {

/// Screen pixels; right and bottom are one past the last.
struct ScreenRect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
    friend bool operator==(const ScreenRect&, const ScreenRect&) = default;
};

/// How a DDS cube map stores its pixels.
enum class DdsEncoding { BySetting, Bc1, Bc3, Bc7, Bc6h, Rgba8, Rgba16, Half };

/// How pictures come out: what every import, view and export may read.
struct ExportSettings {
    float previewFov = 0.2f;            ///< focal length of the preview in picture widths
    bool magnifyingGlass = false;       ///< in the equirectangular view
    std::int32_t resolution0 = 2;       ///< cube map edge, index 0..6
    std::int32_t resolution1 = 4;       ///< equirectangular width, index 0..6
    std::int32_t resolution2 = 3;       ///< sphere map, mirror ball, heart, interior square edge, index 0..6
    std::int32_t resolution3 = 0;       ///< preview size, index 0..3
    std::int32_t fileNamingSystem = 0;  ///< six-file naming, index 0..5
    bool transparency = false;          ///< export the alpha channel
    bool antialiasing = true;
    bool compressDds = true;
    std::int32_t jpegQuality = 0;                      ///< 1 to 100; 0: the encoder's default; not saved
    DdsEncoding ddsEncoding = DdsEncoding::BySetting;  ///< by compressDds; not saved
    bool ddsMips = false;                              ///< mip levels in DDS cube maps; not saved
    std::wstring logo;                                 ///< path of the logo picture
    Color8 backgroundColour = kOpaqueWhite;
};

/// What the generators draw.
struct GeneratorSettings {
    std::int32_t voronoiPoints = 20;
    bool voronoiSmooth = false;
    float voronoiPower = 3.0f;
    float voronoiBorder = 0.0f;
    std::int32_t blobsForceFields = 20;  ///< blobs and rectangles
    float blobsPower = 7.0f;
    float blobsContrast = 1.0f;
    float fractalRoughness = 0.6f;
    float fractalContrast = 0.5f;
    std::int32_t lightsLights = 30;
    float lightsBrightness = 0.2f;
    float polyhedraBorder = 0.0f;
    float polyhedraTextureScale = 0.7f;
    std::int32_t polyhedraFrames = 1;
};

/// Where the window and its dialogs were left.
struct WindowState {
    bool crosshair = false;
    std::wstring importPath;       ///< start folder of the import dialogs
    std::wstring exportPath;       ///< start folder of the export dialogs
    std::int32_t view = 0;         ///< PanoramaFormat shown in the window
    std::int32_t filterIndex = 4;  ///< picture save dialog: 1 BMP, 2 DDS, 3 GIF, 4 JPG, 5 PNG, 6 TIF
    std::int32_t batchSourceFormatIndex = 0;
    std::wstring batchSourceFolder;
    std::int32_t batchDestinationFormatIndex = 1;
    std::wstring batchDestinationFolder;
    std::int32_t batchDestinationExtensionIndex = 1;
    ScreenRect windowRect;
    bool settingsLoaded = false;  ///< the settings file was opened for reading in this run; not saved
};

struct AppState : ExportSettings, GeneratorSettings, WindowState {};

/// Media/Skins/Logo.png beside the program.
std::wstring DefaultLogo(const std::wstring& programFolder);

/// A program folder that was moved or copied takes its own logo along: a logo of such a folder that is not
/// there any more becomes this program's.
void FollowOwnLogo(AppState& state, const std::wstring& programFolder);

/// The defaults with their paths: import from Media/Examples and the logo from Media/Skins beside the
/// program, export to the user's documents (DocumentsFolder()).
AppState DefaultAppState();

/// The default window: 16:9, as tall as the primary screen less 96 pixels, narrowed when the screen is not
/// wide enough; then fitted to the virtual screen.
ScreenRect DefaultWindowRect(std::int32_t screenWidth, std::int32_t screenHeight,
                             const ScreenRect& virtualScreen);

/// Pixels, frame included.
inline constexpr std::int32_t kLeastWindowWidth = 320, kLeastWindowHeight = 240;

/// Moves and sizes a rectangle into the virtual screen, at least 320 × 240 (or the whole screen, when that
/// is smaller). With an empty virtual screen only the least size is seen to.
ScreenRect FitToScreen(const ScreenRect& rect, const ScreenRect& virtualScreen);

}  // namespace skyvault
