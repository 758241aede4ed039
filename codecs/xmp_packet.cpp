#include "codecs/xmp_packet.h"

#include <algorithm>
#include <optional>

#include "codecs/md5.h"

namespace skyvault {
namespace {

constexpr std::string_view kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view kSphere = "http://ns.google.com/photos/1.0/panorama/";
constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kExif = "http://ns.adobe.com/exif/1.0/";
constexpr std::string_view kBasic = "http://ns.adobe.com/xap/1.0/";
constexpr std::string_view kNote = "http://ns.adobe.com/xmp/note/";

/// An attribute, or an element that holds text or other elements.
struct Property {
    std::string_view space, name;  ///< the namespace's address and the local name
    TextRange whole;               ///< what goes when the property goes
    TextRange inside;              ///< the value
};

/// A child of the RDF element: a description.
struct Item {
    TextRange whole;
    std::size_t nameEnd = 0;
    std::vector<std::string_view> declared;  ///< prefixes of namespaces
};

struct Declaration {
    std::string_view prefix, space;
    TextRange whole;
};

struct Packet {
    std::vector<Property> properties;
    std::vector<Item> items;
    std::vector<Declaration> declarations;  ///< in the whole text
    std::vector<Declaration> outer;         ///< those around the descriptions
    TextRange rdf;                          ///< between the RDF element's tags
    std::string rdfPrefix, about;
};

/// Walks a packet and notes what is where.
class PacketReader {
  public:
    explicit PacketReader(std::string_view text) : text_(text) {}

    std::optional<Packet> Read() {
        if (text_.size() > kMostXmpBytes) return {};
        const bool sound = ForEachTag(text_, [&](const XmlTag& tag) {
            if (!IsTooMuch()) Take(tag);
        });
        if (!sound || !rdfSeen_ || !rdfEnded_ || IsTooMuch()) return {};
        return std::move(packet_);
    }

  private:
    struct Element {
        std::string_view space, name;
        TextRange tag;
        std::size_t bindings = 0;  ///< how many there were outside
    };

    /// Far beyond what any photo has, so that no packet takes much memory or time.
    bool IsTooMuch() const {
        constexpr std::size_t kMostProperties = 200000, kMostBindings = 200, kMostItems = 1000;
        return tooMuchInOneTag_ || packet_.properties.size() > kMostProperties ||
               bindings_.size() > kMostBindings || packet_.items.size() > kMostItems;
    }

    void Take(const XmlTag& tag) {
        if (tag.kind == XmlTag::Kind::Close) return End(tag.whole);
        const std::size_t outside = bindings_.size();
        for (const XmlAttribute& attribute : tag.attributes) {
            if (!attribute.name.starts_with("xmlns:")) continue;
            bindings_.push_back({attribute.name.substr(6), attribute.value, attribute.whole});
            packet_.declarations.push_back(bindings_.back());
            // Every name is looked for among all of them.
            if (IsTooMuch()) {
                tooMuchInOneTag_ = true;
                return;
            }
        }
        const auto [space, name] = Resolved(tag.name);
        const bool isRdf = space == kRdf && name == "RDF" && !rdfSeen_;
        const bool isItem = rdfSeen_ && !rdfEnded_ && open_.size() == rdfDepth_ + 1;
        for (const XmlAttribute& attribute : tag.attributes) {
            const auto [where, what] = Resolved(attribute.name);
            packet_.properties.push_back({where, what, attribute.whole, attribute.inside});
            if (isItem && where == kRdf && what == "about" && packet_.about.empty()) {
                packet_.about = attribute.value;
            }
        }
        if (isItem) {
            packet_.items.push_back({tag.whole, tag.nameEnd, {}});
            for (std::size_t i = outside; i < bindings_.size(); ++i) {
                packet_.items.back().declared.push_back(bindings_[i].prefix);
            }
        }
        if (isRdf && tag.kind == XmlTag::Kind::Open) {
            rdfSeen_ = true;
            rdfDepth_ = open_.size();
            packet_.rdf.first = tag.whole.end;
            packet_.rdfPrefix = tag.name.substr(0, tag.name.size() - 3);
            packet_.outer = bindings_;
        }
        open_.push_back({space, name, tag.whole, outside});
        if (tag.kind == XmlTag::Kind::Empty) End({tag.whole.end, tag.whole.end});
    }

    void End(const TextRange& closing) {
        const Element element = open_.back();
        open_.pop_back();
        bindings_.resize(element.bindings);
        packet_.properties.push_back({element.space,
                                      element.name,
                                      WithSpacesBefore(text_, {element.tag.first, closing.end}),
                                      {element.tag.end, std::max(element.tag.end, closing.first)}});
        if (!rdfSeen_ || rdfEnded_) return;
        if (open_.size() == rdfDepth_) {
            rdfEnded_ = true;
            packet_.rdf.end = closing.first;
        } else if (open_.size() == rdfDepth_ + 1) {
            packet_.items.back().whole.end = closing.end;
        }
    }

    /// A name with its prefix as namespace and local name; no namespace without a prefix that is declared.
    std::pair<std::string_view, std::string_view> Resolved(std::string_view name) const {
        const std::size_t colon = name.find(':');
        if (colon == std::string_view::npos) return {{}, name};
        const auto found =
            std::find_if(bindings_.rbegin(), bindings_.rend(),
                         [&](const Declaration& binding) { return binding.prefix == name.substr(0, colon); });
        return {found == bindings_.rend() ? std::string_view() : found->space, name.substr(colon + 1)};
    }

    std::string_view text_;
    Packet packet_;
    std::vector<Declaration> bindings_;
    std::vector<Element> open_;
    bool rdfSeen_ = false, rdfEnded_ = false;
    bool tooMuchInOneTag_ = false;
    std::size_t rdfDepth_ = 0;
};

std::optional<Packet> ReadPacket(std::string_view xmp) {
    return PacketReader(xmp).Read();
}

std::string Slice(std::string_view text, const TextRange& range) {
    return std::string(text.substr(range.first, range.end - range.first));
}

/// A value as an attribute in double quotes has it.
std::string AttributeText(std::string_view value) {
    std::string text;
    for (const char c : value) text += c == '"' ? std::string("&quot;") : std::string(1, c);
    return text;
}

std::string DescriptionOf(const SphereTags& sphere, const std::string& rdfPrefix, const std::string& about) {
    if (sphere.empty()) return {};
    std::string text = "<" + rdfPrefix + "Description " + rdfPrefix + "about=\"" + AttributeText(about) +
                       "\" xmlns:GPano=\"" + std::string(kSphere) + "\"";
    for (const auto& [name, value] : sphere)
        text += "\n   GPano:" + name + "=\"" + AttributeText(value) + "\"";
    return text + "/>\n ";
}

/// What a property becomes in a new picture; nothing: it stays.
std::optional<std::string> NewValue(const Property& property, const PictureSize& size) {
    struct Row {
        std::string_view space, name;
        std::string value;
    };
    const std::string width = std::to_string(size.width), height = std::to_string(size.height);
    const Row rows[] = {{kTiff, "Orientation", "1"},
                        {kTiff, "ImageWidth", width},
                        {kTiff, "ImageLength", height},
                        {kExif, "PixelXDimension", width},
                        {kExif, "PixelYDimension", height}};
    for (const Row& row : rows) {
        if (row.space == property.space && row.name == property.name) return row.value;
    }
    return {};
}

bool Goes(const Property& property) {
    return property.space == kSphere || (property.space == kBasic && property.name == "Thumbnails");
}

/// Of the declarations around the descriptions.
std::size_t OuterSize(const Packet& packet) {
    std::size_t size = 0;
    for (const Declaration& outer : packet.outer) size += outer.whole.end - outer.whole.first;
    return size;
}

bool NamesExtendedPart(const Property& property) {
    return property.space == kNote && property.name == "HasExtendedXMP";
}

}  // namespace

bool IsSoundXmp(std::string_view xmp) {
    return ReadPacket(xmp).has_value();
}

SphereTags ReadSphereTags(std::string_view xmp) {
    SphereTags tags;
    const std::optional<Packet> packet = ReadPacket(xmp);
    if (!packet) return tags;
    for (const Property& property : packet->properties) {
        std::string value = Slice(xmp, property.inside);
        if (property.space != kSphere || value.find('<') != std::string::npos) continue;
        tags.emplace(property.name, std::move(value));
    }
    return tags;
}

std::string CorrectedXmp(const std::string& xmp, const PictureSize& size, const SphereTags& sphere) {
    const std::optional<Packet> packet = ReadPacket(xmp);
    if (!packet) return xmp;
    std::vector<TextEdit> edits;
    for (const Property& property : packet->properties) {
        if (Goes(property)) {
            edits.push_back({property.whole, ""});
        } else if (auto value = NewValue(property, size);
                   value && property.inside.first < property.whole.end) {
            // An empty element has no inside.
            edits.push_back({property.inside, std::move(*value)});
        }
    }
    for (const Declaration& declaration : packet->declarations) {
        if (declaration.space == kSphere) edits.push_back({declaration.whole, ""});
    }
    edits.push_back(
        {{packet->rdf.end, packet->rdf.end}, DescriptionOf(sphere, packet->rdfPrefix, packet->about)});
    return Edited(xmp, std::move(edits));
}

std::string NewXmp(const SphereTags& sphere) {
    return "<?xpacket begin=\"\xef\xbb\xbf\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n <rdf:RDF xmlns:rdf=\"" +
           std::string(kRdf) + "\">\n  " + DescriptionOf(sphere, "rdf:", "") +
           "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
}

std::string ExtendedXmpOf(std::string_view xmp) {
    constexpr std::size_t kNameSize = 32;
    const std::optional<Packet> packet = ReadPacket(xmp);
    if (!packet) return {};
    for (const Property& property : packet->properties) {
        if (NamesExtendedPart(property) && property.inside.end - property.inside.first == kNameSize) {
            return Slice(xmp, property.inside);
        }
    }
    return {};
}

bool MergeExtendedXmp(std::string& xmp, const std::string& extended) {
    const std::optional<Packet> packet = ReadPacket(xmp), more = ReadPacket(extended);
    if (!packet) return false;
    std::vector<TextEdit> edits;
    for (const Property& property : packet->properties) {
        if (NamesExtendedPart(property)) edits.push_back({property.whole, ""});
    }
    const bool fits = more && more->rdfPrefix == packet->rdfPrefix &&
                      OuterSize(*more) * more->items.size() <= kMostXmpBytes;
    if (fits) {
        // What the descriptions need of the namespaces around them goes along.
        std::vector<TextEdit> additions;
        for (const Item& item : more->items) {
            std::string declared;
            for (const Declaration& outer : more->outer) {
                if (std::ranges::find(item.declared, outer.prefix) == item.declared.end()) {
                    declared += Slice(extended, outer.whole);
                }
            }
            additions.push_back({{item.nameEnd, item.nameEnd}, std::move(declared)});
        }
        const std::string whole =
            Edited(std::string_view(extended).substr(0, more->rdf.end), std::move(additions));
        edits.push_back({{packet->rdf.end, packet->rdf.end}, whole.substr(more->rdf.first)});
    }
    xmp = Edited(xmp, std::move(edits));
    return fits;
}

SplitXmp SplitXmpPacket(const std::string& xmp, std::size_t room) {
    const std::optional<Packet> packet = ReadPacket(xmp);
    if (!packet) return {};
    const std::string guidPlace(32, '0');
    const auto noteOf = [&](const std::string& guid) {
        return "<" + packet->rdfPrefix + "Description " + packet->rdfPrefix + "about=\"" +
               AttributeText(packet->about) + "\" xmlns:xmpNote=\"" + std::string(kNote) +
               "\" xmpNote:HasExtendedXMP=\"" + guid + "\"/>";
    };
    const auto sizeOf = [](const Item& item) { return item.whole.end - item.whole.first; };
    std::vector<Item> items = packet->items;
    // The small ones stay: the most of them, and with them those that other programs look for.
    std::ranges::stable_sort(items, {}, sizeOf);
    std::size_t taken = xmp.size() + noteOf(guidPlace).size();
    for (const Item& item : items) taken -= sizeOf(item);
    std::vector<TextEdit> fromMain, fromExtended;
    for (const Item& item : items) {
        const bool stays = taken + sizeOf(item) <= room;
        if (stays) taken += sizeOf(item);
        (stays ? fromExtended : fromMain).push_back({item.whole, ""});
    }
    if (taken > room) return {};
    // The extended part has neither a wrapper nor padding.
    fromExtended.push_back({{packet->rdf.end, packet->rdf.end}, ""});
    SplitXmp split;
    split.extended = Edited(xmp, std::move(fromExtended));
    const std::size_t first = split.extended.find("?>") + 2, last = split.extended.rfind("<?xpacket");
    if (split.extended.starts_with("<?xpacket") && last > first) {
        split.extended = split.extended.substr(first, last - first);
    }
    split.guid = Md5Text(split.extended);
    fromMain.push_back({{packet->rdf.end, packet->rdf.end}, noteOf(split.guid)});
    split.main = Edited(xmp, std::move(fromMain));
    return split;
}

}  // namespace skyvault
