#include "settings/settings_table.h"

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>

#include "settings/number_text.h"

namespace skyvault {
namespace {

constexpr std::array kTable = {
    Setting{L"ImportPath", &AppState::importPath},
    Setting{L"ExportPath", &AppState::exportPath},
    Setting{L"PreviewFOV", &AppState::previewFov},
    Setting{L"Crosshair", &AppState::crosshair},
    Setting{L"MagnifyingGlass", &AppState::magnifyingGlass},
    Setting{L"Resolution0", &AppState::resolution0},
    Setting{L"Resolution1", &AppState::resolution1},
    Setting{L"Resolution2", &AppState::resolution2},
    Setting{L"Resolution3", &AppState::resolution3},
    Setting{L"FileNamingSystem", &AppState::fileNamingSystem},
    Setting{L"Transparency", &AppState::transparency},
    Setting{L"Antialiasing", &AppState::antialiasing},
    Setting{L"View", &AppState::view},
    Setting{L"CompressDDS", &AppState::compressDds},
    Setting{L"FilterIndex", &AppState::filterIndex},
    Setting{L"VoronoiPoints", &AppState::voronoiPoints},
    Setting{L"VoronoiSmooth", &AppState::voronoiSmooth},
    Setting{L"VoronoiPower", &AppState::voronoiPower},
    Setting{L"VoronoiBorder", &AppState::voronoiBorder},
    Setting{L"BlobsForceFields", &AppState::blobsForceFields},
    Setting{L"BlobsPower", &AppState::blobsPower},
    Setting{L"BlobsContrast", &AppState::blobsContrast},
    Setting{L"FractalRoughness", &AppState::fractalRoughness},
    Setting{L"FractalContrast", &AppState::fractalContrast},
    Setting{L"LightsLights", &AppState::lightsLights},
    Setting{L"LightsBrightness", &AppState::lightsBrightness},
    Setting{L"PolyhedraBorder", &AppState::polyhedraBorder},
    Setting{L"PolyhedraTextureScale", &AppState::polyhedraTextureScale},
    Setting{L"PolyhedraFrames", &AppState::polyhedraFrames},
    Setting{L"Batch_SourceFormatIndex", &AppState::batchSourceFormatIndex},
    Setting{L"Batch_SourceFolder", &AppState::batchSourceFolder},
    Setting{L"Batch_DestinationFormatIndex", &AppState::batchDestinationFormatIndex},
    Setting{L"Batch_DestinationFolder", &AppState::batchDestinationFolder},
    Setting{L"Batch_DestinationExtensionIndex", &AppState::batchDestinationExtensionIndex},
    Setting{L"BackgroundColour", &AppState::backgroundColour},
    Setting{L"Logo", &AppState::logo},
    Setting{L"WindowRect", &AppState::windowRect},
};

/// One overload per type of field: the whole text as a value, or false.
bool FromText(std::wstring_view text, std::int32_t& value) {
    return ParseWholeInteger(text, value);
}
bool FromText(std::wstring_view text, float& value) {
    return ParseWholeFloat(text, value);
}

bool FromText(std::wstring_view text, bool& value) {
    value = text == L"Y";
    return value || text == L"N";
}

bool FromText(std::wstring_view text, std::wstring& value) {
    value = text;
    return true;
}

/// Exactly `count` integers with commas between them.
template <std::size_t count>
bool FromText(std::wstring_view text, std::array<std::int32_t, count>& numbers) {
    for (std::size_t i = 0; i < count; ++i) {
        const bool last = i + 1 == count;
        const std::size_t end = last ? text.size() : text.find(L',');
        if (end == std::wstring_view::npos || !ParseWholeInteger(text.substr(0, end), numbers[i]))
            return false;
        text.remove_prefix(last ? end : end + 1);
    }
    return true;
}

bool FromText(std::wstring_view text, Color8& value) {
    std::array<std::int32_t, 3> channels{};
    constexpr std::int32_t kMost = std::numeric_limits<std::uint8_t>::max();
    const auto isChannel = [](std::int32_t channel) { return channel >= 0 && channel <= kMost; };
    if (!FromText(text, channels) || !std::all_of(channels.begin(), channels.end(), isChannel)) return false;
    const auto channel = [&](std::size_t i) { return static_cast<std::uint8_t>(channels[i]); };
    value = Color8(channel(0), channel(1), channel(2), 255);
    return true;
}

bool FromText(std::wstring_view text, ScreenRect& value) {
    std::array<std::int32_t, 4> edges{};
    if (!FromText(text, edges)) return false;
    value = {edges[0], edges[1], edges[2], edges[3]};
    return true;
}

}  // namespace

std::span<const Setting> SettingsTable() {
    return kTable;
}

const Setting* FindSetting(std::wstring_view key) {
    const auto found =
        std::find_if(kTable.begin(), kTable.end(), [&](const Setting& s) { return s.key == key; });
    return found != kTable.end() ? &*found : nullptr;
}

bool SetFromText(AppState& state, const Setting& setting, std::wstring_view value) {
    return std::visit(
        [&](auto field) {
            auto parsed = state.*field;
            if (!FromText(value, parsed)) return false;
            state.*field = parsed;
            return true;
        },
        setting.field);
}

}  // namespace skyvault
