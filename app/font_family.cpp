#include "app/font_family.h"

#include <initializer_list>

#include "platform/com_ptr_win.h"

namespace skyvault {
namespace {

bool HasFamily(IDWriteFontCollection& collection, const std::wstring& family) {
    UINT32 index = 0;
    BOOL exists = FALSE;
    return SUCCEEDED(collection.FindFamilyName(family.c_str(), &index, &exists)) && exists;
}

std::wstring FirstFamily(IDWriteFontCollection& collection) {
    ComPtr<IDWriteFontFamily> family;
    ComPtr<IDWriteLocalizedStrings> names;
    UINT32 length = 0;
    if (FAILED(collection.GetFontFamily(0, family.Put())) || FAILED(family->GetFamilyNames(names.Put())) ||
        FAILED(names->GetStringLength(0, &length))) {
        return {};
    }
    std::wstring name(length + 1, L'\0');
    if (FAILED(names->GetString(0, name.data(), length + 1))) return {};
    name.resize(length);
    return name;
}

/// What GDI takes for the name.
std::wstring SubstitutedFamily(const std::wstring& family) {
    const HDC context = CreateCompatibleDC(nullptr);
    const HFONT font =
        CreateFontW(-12, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                    CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, family.c_str());
    wchar_t name[LF_FACESIZE] = L"";
    if (context != nullptr && font != nullptr) {
        const HGDIOBJ before = SelectObject(context, font);
        GetTextFaceW(context, LF_FACESIZE, name);
        SelectObject(context, before);
    }
    if (font != nullptr) DeleteObject(font);
    if (context != nullptr) DeleteDC(context);
    return name;
}

}  // namespace

std::wstring AvailableFamily(IDWriteFactory& factory, const std::wstring& family) {
    ComPtr<IDWriteFontCollection> collection;
    if (FAILED(factory.GetSystemFontCollection(collection.Put(), FALSE)) ||
        HasFamily(*collection.Get(), family)) {
        return family;
    }
    for (const std::wstring& other : {SubstitutedFamily(family), std::wstring(L"Segoe UI"),
                                      std::wstring(L"Tahoma"), std::wstring(L"Arial")}) {
        if (!other.empty() && HasFamily(*collection.Get(), other)) return other;
    }
    const std::wstring first = FirstFamily(*collection.Get());
    return first.empty() ? family : first;
}

}  // namespace skyvault
