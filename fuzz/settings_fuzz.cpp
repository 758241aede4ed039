// Any bytes as a settings file: what was read keeps to the bounds the program relies on, and survives being
// saved and read again.

#include <cmath>
#include <type_traits>

#include "fuzz/require.h"
#include "platform/debug_line.h"
#include "projection/export_size.h"
#include "projection/single_files.h"
#include "session/batch.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"

using namespace skyvault;

namespace {

constexpr ScreenRect kScreen{-1600, 0, 1600, 1200};

template <typename Text>
AppState Read(const Text& bytes) {
    TextFileReader file;
    file.Start(std::as_bytes(std::span(bytes)));
    AppState state;
    ReadSettings(state, file, kScreen);
    return state;
}

void CheckBounds(const AppState& state) {
    for (const Setting& setting : SettingsTable()) {
        if (const auto* number = std::get_if<float AppState::*>(&setting.field)) {
            Require(std::isfinite(state.**number));
        }
    }
    Require(state.backgroundColour.alpha == 255);
    const ScreenRect& window = state.windowRect;
    const bool given = window != ScreenRect{};
    Require(!given ||
            (window.left >= kScreen.left && window.top >= kScreen.top && window.right <= kScreen.right &&
             window.bottom <= kScreen.bottom && window.right - window.left >= kLeastWindowWidth &&
             window.bottom - window.top >= kLeastWindowHeight));
    for (const std::int32_t index : {state.resolution0, state.resolution1, state.resolution2}) {
        Require(ResolutionOfIndex(index) >= 256 && ResolutionOfIndex(index) <= 16384);
    }
    std::wstring last;
    for (int f = 0; f < kFaceCount; ++f) {
        std::wstring path = SingleFilePath(L"a.png", NamingSystemOf(state), static_cast<CubeFace>(f));
        Require(path != last && path.ends_with(L".png"));
        last = std::move(path);
    }
    const std::int32_t extension =
        BatchExtensionForLayout(state.batchDestinationFormatIndex, state.batchDestinationExtensionIndex);
    static_cast<void>(BatchLayoutForExtension(extension, state.batchDestinationFormatIndex));
}

/// Every field, but those whose saved form says less: small fractions have six digits, a text of one tab
/// reads as none, and a window rectangle that was never given is the smallest window.
void RequireSame(const AppState& saved, const AppState& read, bool exactly) {
    for (const Setting& setting : SettingsTable()) {
        std::visit(
            [&](auto field) {
                using Field = std::remove_cvref_t<decltype(saved.*field)>;
                const Field &before = saved.*field, &after = read.*field;
                bool same = before == after;
                if constexpr (std::is_same_v<Field, float>) {
                    same = same || (!exactly && std::fabs(before - after) < 1e-6f);
                } else if constexpr (std::is_same_v<Field, std::wstring>) {
                    same = same || (!exactly && before == L"\t" && after.empty());
                } else if constexpr (std::is_same_v<Field, ScreenRect>) {
                    same = same || (!exactly && before == ScreenRect{});
                }
                Require(same);
            },
            setting.field);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DebugLineCapture quiet;
    const AppState first = Read(std::span(data, size));
    CheckBounds(first);
    const AppState second = Read(WrittenSettings(first).Bytes());
    CheckBounds(second);
    RequireSame(first, second, false);
    RequireSame(second, Read(WrittenSettings(second).Bytes()), true);
    return 0;
}
