// Every settings key once: what it is called, what it holds and where it lives in AppState. Loading,
// saving and the console's --set all read this table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "settings/app_state.h"

namespace skyvault {

/// A field of AppState, by type. Color8 is stored as red, green, blue; ScreenRect as left, top, right,
/// bottom; every other type as one value.
using SettingField = std::variant<std::int32_t AppState::*, float AppState::*, bool AppState::*,
                                  std::wstring AppState::*, Color8 AppState::*, ScreenRect AppState::*>;

struct Setting {
    const wchar_t* key;
    SettingField field;
};

/// In the order the settings file is written.
std::span<const Setting> SettingsTable();

/// Null when there is no such key (case matters).
const Setting* FindSetting(std::wstring_view key);

/// Sets a field from one text, as the console takes it: a decimal number, Y or N, a path, or
/// comma-separated numbers for colours and rectangles. False, and nothing changed, when the text does not
/// fit the type.
bool SetFromText(AppState& state, const Setting& setting, std::wstring_view value);

}  // namespace skyvault
