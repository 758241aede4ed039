#include "codecs/xml_tags.h"

#include <algorithm>

namespace skyvault {
namespace {

constexpr std::string_view kSpaces = " \t\r\n";
constexpr std::string_view kNameEnds = " \t\r\n=/><\"'";

/// Reads one tag after the other.
class TagReader {
  public:
    explicit TagReader(std::string_view text) : text_(text) {}

    /// False at the end of the text and at what is no tag.
    bool Next(XmlTag& tag) {
        for (;;) {
            at_ = text_.find('<', at_);
            if (at_ == std::string_view::npos) return false;
            if (Skip("<?", "?>") || Skip("<!--", "-->") || Skip("<![CDATA[", "]]>")) continue;
            return !broken_ && Read(tag);
        }
    }
    bool IsBroken() const { return broken_; }

  private:
    bool Broken() {
        broken_ = true;
        return false;
    }

    bool Skip(std::string_view start, std::string_view end) {
        if (!text_.substr(at_).starts_with(start)) return false;
        const std::size_t found = text_.find(end, at_ + start.size());
        if (found == std::string_view::npos) return Broken();
        at_ = found + end.size();
        return true;
    }

    void SkipSpaces() { at_ = std::min(text_.find_first_not_of(kSpaces, at_), text_.size()); }

    std::string_view Name() {
        const std::size_t end = std::min(text_.find_first_of(kNameEnds, at_), text_.size());
        const std::string_view name = text_.substr(at_, end - at_);
        at_ = end;
        return name;
    }

    bool Take(char c) {
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }

    bool ReadAttribute(XmlTag& tag, std::size_t first) {
        XmlAttribute attribute;
        attribute.name = Name();
        SkipSpaces();
        if (attribute.name.empty() || !Take('=')) return Broken();
        SkipSpaces();
        const char quote = at_ < text_.size() ? text_[at_] : ' ';
        if ((quote != '"' && quote != '\'') || !Take(quote)) return Broken();
        const std::size_t end = text_.find(quote, at_);
        if (end == std::string_view::npos) return Broken();
        attribute.value = text_.substr(at_, end - at_);
        if (attribute.value.find('<') != std::string_view::npos) return Broken();
        attribute.inside = {at_, end};
        at_ = end + 1;
        attribute.whole = {first, at_};
        tag.attributes.push_back(attribute);
        return true;
    }

    bool Read(XmlTag& tag) {
        tag = XmlTag();
        tag.whole.first = at_++;
        if (Take('/')) tag.kind = XmlTag::Kind::Close;
        tag.name = Name();
        tag.nameEnd = at_;
        if (tag.name.empty() || tag.name.starts_with('!')) return Broken();
        for (;;) {
            const std::size_t first = at_;
            SkipSpaces();
            if (Take('>')) break;
            if (tag.kind != XmlTag::Kind::Close && Take('/')) {
                tag.kind = XmlTag::Kind::Empty;
                if (!Take('>')) return Broken();
                break;
            }
            if (tag.kind == XmlTag::Kind::Close || first == at_) return Broken();
            if (!ReadAttribute(tag, first)) return false;
        }
        tag.whole.end = at_;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    bool broken_ = false;
};

}  // namespace

bool ForEachTag(std::string_view text, const std::function<void(const XmlTag&)>& take) {
    constexpr std::size_t kDeepest = 100;
    TagReader reader(text);
    std::vector<std::string_view> open;
    bool rootEnded = false;
    for (XmlTag tag; reader.Next(tag);) {
        if (rootEnded) return false;
        if (tag.kind == XmlTag::Kind::Open) {
            if (open.size() == kDeepest) return false;
            open.push_back(tag.name);
        } else if (tag.kind == XmlTag::Kind::Close) {
            if (open.empty() || open.back() != tag.name) return false;
            open.pop_back();
        }
        rootEnded = open.empty();
        take(tag);
    }
    return rootEnded && !reader.IsBroken();
}

std::string Edited(std::string_view text, std::vector<TextEdit> edits) {
    std::ranges::stable_sort(edits, {}, [](const TextEdit& edit) { return edit.range.first; });
    std::string result;
    std::size_t done = 0;
    for (const TextEdit& edit : edits) {
        if (edit.range.first < done) continue;
        result.append(text.substr(done, edit.range.first - done)).append(edit.text);
        done = edit.range.end;
    }
    return result.append(text.substr(done));
}

TextRange WithSpacesBefore(std::string_view text, TextRange range) {
    const std::size_t last = text.substr(0, range.first).find_last_not_of(kSpaces);
    return {last == std::string_view::npos ? 0 : last + 1, range.end};
}

}  // namespace skyvault
