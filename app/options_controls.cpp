#include "app/options_controls.h"

#include <cstdint>
#include <span>
#include <variant>

#include "app/draw_canvas.h"
#include "app/window_helpers.h"
#include "codecs/picture_files.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "settings/number_text.h"

namespace skyvault {
namespace {

using Items = std::span<const wchar_t* const>;

constexpr const wchar_t* kCubeMapSizes[] = {
    L"6 x 256 x 256",   L"6 x 512 x 512",   L"6 x 1024 x 1024",   L"6 x 2048 x 2048",
    L"6 x 4096 x 4096", L"6 x 8192 x 8192", L"6 x 16384 x 16384",
};
// The last one is only a text: the exporter makes the height half the width.
constexpr const wchar_t* kEquirectangularSizes[] = {
    L"256 x 128",   L"512 x 256",   L"1024 x 512",   L"2048 x 1024",
    L"4096 x 2048", L"8192 x 4096", L"16384 x 8182",
};
constexpr const wchar_t* kSphereMapSizes[] = {
    L"256 x 256",   L"512 x 512",   L"1024 x 1024",   L"2048 x 2048",
    L"4096 x 4096", L"8192 x 8192", L"16384 x 16384",
};
constexpr const wchar_t* kPreviewSizes[] = {
    L"HD 1280 x 720",
    L"HD 1920 x 1080",
    L"UHD 4K 3840 x 2160",
    L"UHD 8K 7680 x 4320",
};
constexpr const wchar_t* kNamingSystems[] = {
    L"_front, _right, _back, _left, _top, _bottom",
    L"_front, _right, _back, _left, _up, _down",
    L"_f, _r, _b, _l, _u, _d (RealViz)",
    L"_ft, _rt, _bk, _lf, _up, _dn (Quake II)",
    L"f_, r_, b_, l_, u_, d_ (Adobe)",
    L"0, 1, 2, 3, 4, 5 (numbers)",
};

/// What a control edits, by kind of control.
struct List {
    std::int32_t AppState::*field;
    Items items;
};
struct CheckBox {
    bool AppState::*field;
};
struct PathEdit {
    std::wstring AppState::*field;
};
struct IntegerEdit {
    std::int32_t AppState::*field;
};
/// An integer that may be typed with a fraction, which is cut off.
struct TruncatedEdit {
    std::int32_t AppState::*field;
};
struct NumberEdit {
    float AppState::*field;
};

struct Control {
    int id;
    std::variant<List, CheckBox, PathEdit, IntegerEdit, TruncatedEdit, NumberEdit> edits;
};

constexpr Control kControls[] = {
    {IDC_CUBE_RESOLUTION, List{&AppState::resolution0, kCubeMapSizes}},
    {IDC_EQUIRECTANGULAR_RESOLUTION, List{&AppState::resolution1, kEquirectangularSizes}},
    {IDC_SPHERE_MAP_RESOLUTION, List{&AppState::resolution2, kSphereMapSizes}},
    {IDC_PREVIEW_RESOLUTION, List{&AppState::resolution3, kPreviewSizes}},
    {IDC_NAMING_SYSTEM, List{&AppState::fileNamingSystem, kNamingSystems}},
    {IDC_EXPORT_ALPHA, CheckBox{&AppState::transparency}},
    {IDC_ANTIALIASING, CheckBox{&AppState::antialiasing}},
    {IDC_COMPRESS_DDS, CheckBox{&AppState::compressDds}},
    {IDC_LOGO_PATH, PathEdit{&AppState::logo}},
    {IDC_VORONOI_POINTS, IntegerEdit{&AppState::voronoiPoints}},
    {IDC_VORONOI_SMOOTH, CheckBox{&AppState::voronoiSmooth}},
    {IDC_VORONOI_POWER, NumberEdit{&AppState::voronoiPower}},
    {IDC_VORONOI_BORDER, NumberEdit{&AppState::voronoiBorder}},
    {IDC_BLOBS_POINTS, TruncatedEdit{&AppState::blobsForceFields}},
    {IDC_BLOBS_POWER, NumberEdit{&AppState::blobsPower}},
    {IDC_BLOBS_CONTRAST, NumberEdit{&AppState::blobsContrast}},
    {IDC_FRACTAL_ROUGHNESS, NumberEdit{&AppState::fractalRoughness}},
    {IDC_FRACTAL_CONTRAST, NumberEdit{&AppState::fractalContrast}},
    {IDC_LIGHTS, IntegerEdit{&AppState::lightsLights}},
    {IDC_LIGHTS_BRIGHTNESS, NumberEdit{&AppState::lightsBrightness}},
    {IDC_POLYHEDRA_BORDER, NumberEdit{&AppState::polyhedraBorder}},
    {IDC_TEXTURE_SIZE, NumberEdit{&AppState::polyhedraTextureScale}},
    {IDC_FILMSTRIP_FRAMES, TruncatedEdit{&AppState::polyhedraFrames}},
};

/// Room for the largest float with its sign, decimals and more zeros than anybody needs.
constexpr WPARAM kNumberLimit = 64;
/// The longest path of the system.
constexpr WPARAM kPathLimit = 32767;

struct SetUp {
    HWND dialog;
    int id;

    void operator()(const List& list) const {
        SendDlgItemMessageW(dialog, id, CB_RESETCONTENT, 0, 0);
        for (const wchar_t* const item : list.items) {
            SendDlgItemMessageW(dialog, id, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
        }
    }
    void operator()(const CheckBox&) const {}
    void operator()(const PathEdit&) const { Limit(kPathLimit); }
    void operator()(const IntegerEdit&) const { Limit(kNumberLimit); }
    void operator()(const TruncatedEdit&) const { Limit(kNumberLimit); }
    void operator()(const NumberEdit&) const { Limit(kNumberLimit); }

    void Limit(WPARAM limit) const { SendDlgItemMessageW(dialog, id, EM_SETLIMITTEXT, limit, 0); }
};

struct Show {
    HWND dialog;
    int id;
    const AppState& settings;

    void operator()(const List& list) const {
        // An index outside of the list leaves it without a choice.
        SendDlgItemMessageW(dialog, id, CB_SETCURSEL,
                            static_cast<WPARAM>(static_cast<LPARAM>(settings.*list.field)), 0);
    }
    void operator()(const CheckBox& box) const {
        CheckDlgButton(dialog, id, settings.*box.field ? BST_CHECKED : BST_UNCHECKED);
    }
    void operator()(const PathEdit& edit) const { Text(settings.*edit.field); }
    void operator()(const IntegerEdit& edit) const { Text(IntegerText(settings.*edit.field)); }
    void operator()(const TruncatedEdit& edit) const { Text(IntegerText(settings.*edit.field)); }
    void operator()(const NumberEdit& edit) const { Text(FloatText(settings.*edit.field)); }

    void Text(const std::wstring& text) const { SetDlgItemTextW(dialog, id, text.c_str()); }
};

struct Read {
    HWND dialog;
    int id;
    AppState& settings;

    void operator()(const List& list) const {
        const LRESULT choice = SendDlgItemMessageW(dialog, id, CB_GETCURSEL, 0, 0);
        if (choice != CB_ERR) settings.*list.field = static_cast<std::int32_t>(choice);
    }
    void operator()(const CheckBox& box) const {
        settings.*box.field = IsDlgButtonChecked(dialog, id) == BST_CHECKED;
    }
    void operator()(const PathEdit& edit) const { settings.*edit.field = Text(); }
    void operator()(const IntegerEdit& edit) const { settings.*edit.field = ParseInteger(Text()); }
    void operator()(const TruncatedEdit& edit) const { settings.*edit.field = ParseTruncated(Number()); }
    void operator()(const NumberEdit& edit) const { settings.*edit.field = ParseFloat(Number()); }

    std::wstring Text() const { return TextOfControl(dialog, id); }
    std::wstring Number() const { return WithDecimalPoint(Text()); }
};

/// Larger pictures are read at this size: several times that of the preview, which averages them down.
constexpr std::uint32_t kLargestRead = 512;

}  // namespace

void SetUpOptionsControls(HWND dialog) {
    for (const Control& control : kControls) std::visit(SetUp{dialog, control.id}, control.edits);
}

void ShowInControls(HWND dialog, const AppState& settings) {
    for (const Control& control : kControls) std::visit(Show{dialog, control.id, settings}, control.edits);
}

void ReadFromControls(HWND dialog, AppState& settings) {
    for (const Control& control : kControls) std::visit(Read{dialog, control.id, settings}, control.edits);
}

bool LogoPreview::SetPath(const std::wstring& path) {
    if (path == path_) return false;
    path_ = path;
    const bool wasEmpty = !picture_.IsValid();
    picture_.Clear();
    // While a path is being typed it mostly names nothing yet.
    if (FileExists(path)) {
        static_cast<void>(LoadPicture(path, picture_, {.frame = 0, .target = {kLargestRead, kLargestRead}}));
    }
    return picture_.IsValid() || !wasEmpty;
}

void LogoPreview::Draw(HDC context, const RECT& rect) const {
    FillRect(context, &rect, GetSysColorBrush(COLOR_BTNFACE));
    if (!picture_.IsValid()) return;
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    const Color8 around(GetRValue(face), GetGValue(face), GetBValue(face), 255);
    DrawCanvas canvas(context, rect);
    PresentPicture(canvas, {rect.right - rect.left, rect.bottom - rect.top}, picture_, around, false);
}

}  // namespace skyvault
