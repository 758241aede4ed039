#include "codecs/jpeg_metadata.h"

#include <algorithm>
#include <map>

#include "codecs/bytes.h"
#include "codecs/xmp_packet.h"

namespace skyvault {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kExifName = "Exif\0\0"sv;
constexpr std::string_view kXmpName = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kExtendedName = "http://ns.adobe.com/xmp/extension/\0"sv;
constexpr std::string_view kIccName = "ICC_PROFILE\0"sv;

constexpr std::size_t kSegmentRoom = 65533;  // beside the two bytes of its length
constexpr std::size_t kIccPiece = kSegmentRoom - kIccName.size() - 2;
constexpr std::size_t kMostIccPieces = 255;
constexpr std::size_t kXmpRoom = kSegmentRoom - kXmpName.size();
constexpr std::size_t kGuidSize = 32, kExtendedHead = kGuidSize + 8;
constexpr std::size_t kExtendedPiece = 65400;

enum Marker : std::uint8_t {
    kSof0 = 0xc0,
    kSoi = 0xd8,
    kEoi = 0xd9,
    kSos = 0xda,
    kApp0 = 0xe0,
    kApp1,
    kApp2
};

struct Segment {
    std::uint8_t marker = 0;
    std::uint64_t at = 0;         ///< of the marker
    std::uint64_t contentAt = 0;  ///< behind the length
    std::uint64_t end = 0;
};

/// Walks the segments between the start of the file and its pixels.
class Segments {
  public:
    explicit Segments(const ByteSource& file) : file_(file) {}

    /// False at the pixels, at the end, and where no segment is.
    bool Next(Segment& segment) {
        std::byte head[4];
        if (!file_.Read(at_, head, 2) || head[0] != std::byte{0xff}) return false;
        // A marker may be filled up with 0xff before it, by a few in practice.
        constexpr int kMostFill = 4096;
        for (int fill = 0; head[1] == std::byte{0xff}; ++fill) {
            if (fill == kMostFill || !file_.Read(++at_, head, 2)) return false;
        }
        segment.marker = std::to_integer<std::uint8_t>(head[1]);
        if (segment.marker == kSos || segment.marker == kEoi || segment.marker < kSof0 ||
            !file_.Read(at_, head, 4)) {
            return false;
        }
        segment.at = at_;
        segment.contentAt = at_ + 4;
        segment.end = at_ + 2 + Big16(head + 2);
        if (segment.end < segment.contentAt || segment.end > file_.size) return false;
        at_ = segment.end;
        return true;
    }

    /// Where the walk stands: at what is no segment, once Next was false.
    std::uint64_t At() const { return at_; }

    /// The content behind the name; nothing when the segment has another name.
    bool Named(const Segment& segment, std::string_view name, std::vector<std::byte>& content) const {
        if (segment.end - segment.contentAt < name.size()) return false;
        content = file_.Piece(segment.contentAt, segment.end - segment.contentAt);
        if (!TextOfBytes(content).starts_with(name)) return false;
        content.erase(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(name.size()));
        return true;
    }

  private:
    const ByteSource& file_;
    std::uint64_t at_ = 2;
};

/// The pieces of a profile, which say how many they are and which.
class ProfilePieces {
  public:
    void Add(std::vector<std::byte> content) {
        if (content.size() < 2) return;
        const std::size_t number = std::to_integer<std::size_t>(content[0]);
        count_ = std::max(count_, std::to_integer<std::size_t>(content[1]));
        content.erase(content.begin(), content.begin() + 2);
        pieces_.emplace(number, std::move(content));
    }

    /// False for a profile of which pieces lack.
    bool Join(std::vector<std::byte>& icc) const {
        bool whole = pieces_.size() == count_;
        for (std::size_t i = 1; whole && i <= count_; ++i) {
            const auto piece = pieces_.find(i);
            whole = piece != pieces_.end();
            if (whole) Append(icc, piece->second);
        }
        if (!whole) icc.clear();
        return whole;
    }

  private:
    std::map<std::size_t, std::vector<std::byte>> pieces_;
    std::size_t count_ = 0;
};

/// The packets that did not fit into one segment, by the name that the main packet calls them.
class ExtendedPackets {
  public:
    void Add(const std::vector<std::byte>& content) {
        if (content.size() < kExtendedHead) return;
        Packet& packet = packets_[std::string(TextOfBytes(content).substr(0, kGuidSize))];
        const std::uint64_t total = Big32(&content[kGuidSize]), at = Big32(&content[kGuidSize + 4]);
        const std::uint64_t bytes = content.size() - kExtendedHead;
        if (total > kMostMetadataBytes || at + bytes > total || taken_ + bytes > kMostMetadataBytes) return;
        taken_ += bytes;
        packet.total = std::max(packet.total, total);
        packet.pieces.emplace(at, TextOfBytes(content).substr(kExtendedHead));
    }

    /// Empty unless all of it is there.
    std::string Find(const std::string& guid) const {
        const auto packet = packets_.find(guid);
        std::string text;
        if (packet == packets_.end()) return text;
        for (const auto& [at, piece] : packet->second.pieces) {
            if (at == text.size()) text += piece;
        }
        return text.size() == packet->second.total ? text : std::string();
    }

  private:
    struct Packet {
        std::uint64_t total = 0;
        std::map<std::uint64_t, std::string> pieces;
    };
    std::map<std::string, Packet> packets_;
    std::uint64_t taken_ = 0;
};

/// Whether a segment holds what we write ourselves.
bool IsMetadata(const Segments& segments, const Segment& segment) {
    std::vector<std::byte> content;
    if (segment.marker == kApp2) return segments.Named(segment, kIccName, content);
    return segment.marker == kApp1 &&
           (segments.Named(segment, kExifName, content) || segments.Named(segment, kXmpName, content) ||
            segments.Named(segment, kExtendedName, content));
}

void AddSegment(std::vector<std::byte>& to, Marker marker, std::string_view name,
                std::span<const std::byte> head, std::span<const std::byte> content) {
    to.push_back(std::byte{0xff});
    to.push_back(static_cast<std::byte>(marker));
    AppendBig16(to, static_cast<std::uint32_t>(2 + name.size() + head.size() + content.size()));
    Append(to, BytesOfText(name));
    Append(to, head);
    Append(to, content);
}

void AddXmp(std::vector<std::byte>& to, const std::string& xmp) {
    if (xmp.size() <= kXmpRoom) return AddSegment(to, kApp1, kXmpName, {}, BytesOfText(xmp));
    const SplitXmp split = SplitXmpPacket(xmp, kXmpRoom);
    if (split.main.empty()) return;  // FitIntoJpeg saw to it
    AddSegment(to, kApp1, kXmpName, {}, BytesOfText(split.main));
    const std::span<const std::byte> extended = BytesOfText(split.extended);
    for (std::size_t at = 0; at < extended.size(); at += kExtendedPiece) {
        std::vector<std::byte> head;
        Append(head, BytesOfText(split.guid));
        AppendBig32(head, static_cast<std::uint32_t>(extended.size()));
        AppendBig32(head, static_cast<std::uint32_t>(at));
        AddSegment(to, kApp1, kExtendedName, head,
                   extended.subspan(at, std::min(kExtendedPiece, extended.size() - at)));
    }
}

void AddProfile(std::vector<std::byte>& to, std::span<const std::byte> icc) {
    const std::size_t count = (icc.size() + kIccPiece - 1) / kIccPiece;
    for (std::size_t i = 0; i < count; ++i) {
        const std::byte head[] = {static_cast<std::byte>(i + 1), static_cast<std::byte>(count)};
        const std::size_t at = i * kIccPiece;
        AddSegment(to, kApp2, kIccName, head, icc.subspan(at, std::min(kIccPiece, icc.size() - at)));
    }
}

}  // namespace

bool IsJpegStart(const ByteSource& file) {
    std::byte start[2];
    return file.Read(0, start, 2) && start[0] == std::byte{0xff} && start[1] == std::byte{kSoi};
}

void ReadJpegMetadata(const ByteSource& file, PhotoMetadata& metadata) {
    Segments segments(file);
    ProfilePieces profile;
    ExtendedPackets extended;
    std::vector<std::byte> content;
    for (Segment segment; segments.Next(segment);) {
        if (segment.marker == kApp2 && segments.Named(segment, kIccName, content)) {
            profile.Add(std::move(content));
        } else if (segment.marker != kApp1) {
            continue;
        } else if (segments.Named(segment, kExifName, content)) {
            if (metadata.exif.empty()) metadata.exif = std::move(content);
        } else if (segments.Named(segment, kXmpName, content)) {
            if (metadata.xmp.empty()) metadata.xmp = TextOfBytes(content);
        } else if (segments.Named(segment, kExtendedName, content)) {
            extended.Add(content);
        }
    }
    if (!profile.Join(metadata.icc))
        metadata.lost.emplace_back(L"the colour profile lacks a piece and was left out");
    const std::string guid = ExtendedXmpOf(metadata.xmp);
    if (guid.empty()) return;
    const std::string more = extended.Find(guid);
    if (!MergeExtendedXmp(metadata.xmp, more)) {
        metadata.lost.emplace_back(
            L"the extended part of the XMP data is damaged or missing and was left out");
    }
}

int ChannelsOfJpeg(const ByteSource& file) {
    Segments segments(file);
    for (Segment segment; segments.Next(segment);) {
        const bool frame = segment.marker >= kSof0 && segment.marker <= 0xcf && segment.marker != 0xc4 &&
                           segment.marker != 0xc8 && segment.marker != 0xcc;
        std::byte components{};
        if (frame)
            return file.Read(segment.contentAt + 5, &components, 1) ? std::to_integer<int>(components) : 0;
    }
    return 0;
}

void FitIntoJpeg(PhotoMetadata& metadata, std::vector<std::wstring>& lost) {
    if (metadata.exif.size() > kSegmentRoom - kExifName.size()) {
        metadata.exif.clear();
        lost.emplace_back(L"the EXIF data are larger than JPEG files allow and were left out");
    }
    if (metadata.icc.size() > kIccPiece * kMostIccPieces) {
        metadata.icc.clear();
        lost.emplace_back(L"the colour profile is larger than JPEG files allow and was left out");
    }
    if (metadata.xmp.size() > kXmpRoom && SplitXmpPacket(metadata.xmp, kXmpRoom).main.empty()) {
        metadata.xmp.clear();
        lost.emplace_back(L"the XMP data are larger than JPEG files allow and were left out");
    }
}

bool WriteJpegMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink) {
    std::vector<std::byte> ours;
    if (!metadata.exif.empty()) AddSegment(ours, kApp1, kExifName, {}, metadata.exif);
    if (!metadata.xmp.empty()) AddXmp(ours, metadata.xmp);
    AddProfile(ours, metadata.icc);
    if (!IsJpegStart(file) || !CopyBytes(file, 0, 2, sink)) return false;
    Segments segments(file);
    bool written = false;
    for (Segment segment; segments.Next(segment);) {
        // JFIF's own segment stays the first.
        if (!written && segment.marker != kApp0) {
            if (!sink(ours.data(), ours.size())) return false;
            written = true;
        }
        if (!IsMetadata(segments, segment) && !CopyBytes(file, segment.at, segment.end, sink)) return false;
    }
    return written && CopyBytes(file, segments.At(), file.size, sink);
}

}  // namespace skyvault
