// A packet of XMP: what programs note about a photo, in RDF. It is edited as text: what is not meant stays as
// it is, to the byte.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "codecs/xml_tags.h"
#include "image/image.h"

namespace skyvault {

/// The names and values of the panorama properties ("GPano"), values as XML has them: "ProjectionType" →
/// "equirectangular".
using SphereTags = std::map<std::string, std::string, std::less<>>;

/// No larger packet is looked at.
inline constexpr std::size_t kMostXmpBytes = std::size_t{8} << 20;

/// Whether the packet is well-formed XML with RDF in it, and no more than kMostXmpBytes.
bool IsSoundXmp(std::string_view xmp);

/// Nothing for a packet that has none.
SphereTags ReadSphereTags(std::string_view xmp);

/// The packet for a picture of that size that stands upright: sizes and orientation are set where it has
/// them, thumbnails go, and the panorama properties become these. xmp: sound.
std::string CorrectedXmp(const std::string& xmp, const PictureSize& size, const SphereTags& sphere);

/// A new packet with nothing but the panorama properties.
std::string NewXmp(const SphereTags& sphere);

/// The name of the packet's extended part, of 32 characters; empty when it has none.
std::string ExtendedXmpOf(std::string_view xmp);

/// Puts the extended part's properties into the packet, which from then on has no extended part. False when
/// that is not sound; the packet then only loses its name.
bool MergeExtendedXmp(std::string& xmp, const std::string& extended);

/// A packet as a main one of at most `room` bytes and an extended one, whose name is the digest of its text.
/// All empty when that cannot be: one of its descriptions is too large.
struct SplitXmp {
    std::string main, extended, guid;
};
SplitXmp SplitXmpPacket(const std::string& xmp, std::size_t room);

}  // namespace skyvault
