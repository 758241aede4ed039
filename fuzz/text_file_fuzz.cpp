#include <cmath>

#include "fuzz/require.h"
#include "settings/text_file.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> bytes = BytesOf(data, size);
    TextFileReader reader;
    reader.Start(bytes);
    std::size_t characters = 0;
    while (reader.NextLine()) {
        // One field beyond either end: missing fields are asked for too.
        for (std::int32_t field = -1; field <= reader.FieldCount(); ++field) {
            characters += reader.Text(field, false).size();
            static_cast<void>(reader.Text(field));
            static_cast<void>(reader.Integer(field));
            static_cast<void>(reader.Bool(field));
            Require(std::isfinite(reader.Float(field)));
        }
    }
    Require(characters <= size);

    // What was decoded is valid text, so that every Unicode encoding keeps it.
    TextEncoding encoding{};
    const std::wstring text = DecodeText(bytes, encoding);
    for (const TextEncoding target : {TextEncoding::Utf16Le, TextEncoding::Utf16Be, TextEncoding::Utf8}) {
        if (sizeof(wchar_t) == 2 && target == TextEncoding::Utf8)
            continue;  // unpaired surrogates have no UTF-8
        const std::string encoded = EncodeText(text, target);
        Require(DecodeText(std::as_bytes(std::span(encoded)), encoding) == text && encoding == target);
    }
    return 0;
}
