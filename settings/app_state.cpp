#include "settings/app_state.h"

#include <algorithm>
#include <limits>

#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/system_text.h"

namespace skyvault {
namespace {

// 64 bits: the corners of a rectangle from a file may lie anywhere.
struct Span {
    std::int64_t low, high;
    std::int64_t Length() const { return high - low; }
};

/// One axis of FitToScreen.
Span FitToScreen(Span span, std::int64_t leastLength, Span screen) {
    const bool hasScreen = screen.Length() > 0;
    std::int64_t length = std::max(span.Length(), leastLength);
    if (!hasScreen) return {span.low, span.low + length};
    length = std::min(length, screen.Length());
    if (span.low < screen.low || span.low >= screen.high) span.low = screen.low;
    span.high = span.low + length;
    if (span.high >= screen.high) span = {screen.high - length, screen.high};
    return span;
}

std::int32_t Saturate(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

}  // namespace

std::wstring DefaultLogo(const std::wstring& programFolder) {
    return JoinPath(JoinPath(JoinPath(programFolder, L"Media"), L"Skins"), L"Logo.png");
}

void FollowOwnLogo(AppState& state, const std::wstring& programFolder) {
    const std::wstring ending = UpperCase(kPathSeparator + DefaultLogo({}));
    if (UpperCase(state.logo).ends_with(ending) && !FileExists(state.logo))
        state.logo = DefaultLogo(programFolder);
}

AppState DefaultAppState() {
    AppState state;
    const std::wstring media = JoinPath(ProgramFolder(), L"Media");
    state.importPath = JoinPath(media, L"Examples");
    state.exportPath = DocumentsFolder();
    state.logo = DefaultLogo(ProgramFolder());
    return state;
}

ScreenRect DefaultWindowRect(std::int32_t screenWidth, std::int32_t screenHeight,
                             const ScreenRect& virtualScreen) {
    constexpr std::int64_t kCorner = 32;
    const std::int64_t height = std::int64_t{screenHeight} - 96;
    const std::int64_t width = std::min<std::int64_t>(height * 16 / 9, std::int64_t{screenWidth} - 64);
    const ScreenRect rect{static_cast<std::int32_t>(kCorner), static_cast<std::int32_t>(kCorner),
                          Saturate(kCorner + width), Saturate(kCorner + height)};
    return FitToScreen(rect, virtualScreen);
}

ScreenRect FitToScreen(const ScreenRect& rect, const ScreenRect& virtualScreen) {
    const Span x = FitToScreen(Span{rect.left, rect.right}, kLeastWindowWidth,
                               {virtualScreen.left, virtualScreen.right});
    const Span y = FitToScreen(Span{rect.top, rect.bottom}, kLeastWindowHeight,
                               {virtualScreen.top, virtualScreen.bottom});
    return {Saturate(x.low), Saturate(y.low), Saturate(x.high), Saturate(y.high)};
}

}  // namespace skyvault
