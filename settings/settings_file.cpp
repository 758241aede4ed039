#include "settings/settings_file.h"

#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "settings/settings_table.h"

namespace skyvault {
namespace {

constexpr wchar_t kFileName[] = L"Skyvault.txt";
constexpr wchar_t kOlderFileName[] = L"Skyvault.ini";

/// Stores the values of the reader's current line into a field, one overload per type.
struct FieldReader {
    AppState& state;
    const TextFileReader& line;
    const ScreenRect& virtualScreen;

    void operator()(std::int32_t AppState::*field) const { state.*field = line.Integer(1); }
    void operator()(float AppState::*field) const { state.*field = line.Float(1); }
    void operator()(bool AppState::*field) const { state.*field = line.Bool(1); }
    void operator()(std::wstring AppState::*field) const { state.*field = line.Text(1); }

    void operator()(Color8 AppState::*field) const {
        const auto lowByte = [&](std::int32_t i) {
            return static_cast<std::uint8_t>(line.Integer(i) & 0xff);
        };
        state.*field = Color8(lowByte(1), lowByte(2), lowByte(3), 255);
    }

    void operator()(ScreenRect AppState::*field) const {
        const ScreenRect rect{line.Integer(1), line.Integer(2), line.Integer(3), line.Integer(4)};
        state.*field = FitToScreen(rect, virtualScreen);
    }
};

/// Adds a field's values to the writer's current line.
struct FieldWriter {
    const AppState& state;
    TextFileWriter& line;

    void operator()(std::int32_t AppState::*field) const { line.AddInteger(state.*field); }
    void operator()(float AppState::*field) const { line.AddFloat(state.*field); }
    void operator()(bool AppState::*field) const { line.AddBool(state.*field); }
    void operator()(std::wstring AppState::*field) const { line.AddText(state.*field); }

    void operator()(Color8 AppState::*field) const {
        const Color8& colour = state.*field;
        for (const std::uint8_t channel : {colour.red, colour.green, colour.blue}) line.AddInteger(channel);
    }

    void operator()(ScreenRect AppState::*field) const {
        const ScreenRect& rect = state.*field;
        for (const std::int32_t edge : {rect.left, rect.top, rect.right, rect.bottom}) line.AddInteger(edge);
    }
};

}  // namespace

std::wstring SettingsPath(const std::wstring& programFolder) {
    std::wstring path = JoinPath(ApplicationDataFolder(), kFileName);
    MoveOlderSettings(programFolder, path);
    return path;
}

void MoveOlderSettings(const std::wstring& programFolder, const std::wstring& path) {
    if (programFolder.empty()) return;
    for (const wchar_t* name : {kOlderFileName, kFileName}) {
        const std::wstring older = JoinPath(programFolder, name);
        if (!FileExists(older)) continue;
        MoveToNewName(older, path);
        return;
    }
}

void LoadSettings(AppState& state, const std::wstring& path, const ScreenRect& virtualScreen) {
    if (!FileExists(path)) return;
    TextFileReader file;
    if (!file.Open(path)) return;
    state.settingsLoaded = true;
    ReadSettings(state, file, virtualScreen);
}

void ReadSettings(AppState& state, TextFileReader& file, const ScreenRect& virtualScreen) {
    while (file.NextLine()) {
        const Setting* setting = FindSetting(file.Text(0));
        if (setting != nullptr) std::visit(FieldReader{state, file, virtualScreen}, setting->field);
    }
}

TextFileWriter WrittenSettings(const AppState& state) {
    TextFileWriter file(TextEncoding::Utf16Le);
    for (const Setting& setting : SettingsTable()) {
        file.AddText(setting.key);
        std::visit(FieldWriter{state, file}, setting.field);
        file.EndLine();
    }
    return file;
}

Outcome SaveSettings(const AppState& state, const std::wstring& path) {
    if (FileExists(path) && !state.settingsLoaded) return {};
    RemoveAbandonedOutputs(std::wstring(FolderPart(path)));
    Outcome saved = WrittenSettings(state).Save(path);
    if (!saved.IsDone()) saved.reason = Reason::CannotSaveSettings;
    return saved;
}

}  // namespace skyvault
