// XML cut into its tags, as far as packets of XMP need it. Text and attributes stay as they are written, so
// that what is not edited keeps every byte.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace skyvault {

/// A piece of the text, from its first character to one behind its last.
struct TextRange {
    std::size_t first = 0, end = 0;
};

struct XmlAttribute {
    std::string_view name, value;
    TextRange whole;   ///< with the spaces before it
    TextRange inside;  ///< the value between its quotes
};

struct XmlTag {
    enum class Kind { Open, Close, Empty };
    Kind kind = Kind::Open;
    std::string_view name;
    std::vector<XmlAttribute> attributes;
    TextRange whole;          ///< from "<" to ">"
    std::size_t nameEnd = 0;  ///< where the name ends
};

/// Calls `take` for every tag, in order. False for what is no well-formed XML: tags that do not pair, more
/// than one root, a document type (which could define entities), a nesting of more than 100.
bool ForEachTag(std::string_view text, const std::function<void(const XmlTag&)>& take);

/// Text with another one in the place of each range; ranges that begin within an earlier one are left out.
struct TextEdit {
    TextRange range;
    std::string text;
};
std::string Edited(std::string_view text, std::vector<TextEdit> edits);

/// The range with the spaces before it.
TextRange WithSpacesBefore(std::string_view text, TextRange range);

}  // namespace skyvault
