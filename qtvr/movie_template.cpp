#include "qtvr/movie_template.h"

#include <string_view>

#include "qtvr/atom_writer.h"

namespace skyvault {

namespace {

using Writer = AtomWriter<kMovieHeaderSize>;
using JpegSizes = std::array<std::uint32_t, kFaceCount>;

constexpr std::uint32_t kTime = 0xc100da6c;  // seconds since 1904: creation and modification, everywhere
constexpr std::uint32_t kTimeScale = 3600;
constexpr std::uint32_t kDuration = 3600;
constexpr std::uint32_t kOne = 0x00010000;  // 16.16
constexpr std::uint32_t kWindowWidth = 800, kWindowHeight = 600;

constexpr std::size_t kMediaData = 2209;       // offset of mdat
constexpr std::size_t kNodeSample = 2233;      // its samples
constexpr std::size_t kPanoramaSample = 2313;  //
constexpr std::size_t kNodeSampleSize = 80, kPanoramaSampleSize = 192;

/// Offsets in the template count on its length: what the version leaves is filled with spaces.
constexpr std::size_t kAuthoringToolSize = 35;
constexpr std::string_view kAuthoringTool = "Skyvault " SKYVAULT_VERSION " Brambleworks Studio";
static_assert(kAuthoringTool.size() <= kAuthoringToolSize);

constexpr void IdentityMatrix(Writer& w) {
    for (const std::uint32_t value : {kOne, 0u, 0u, 0u, kOne, 0u, 0u, 0u, 0x40000000u}) w.U32(value);
}

/// Version 0 and flags.
constexpr void Flags(Writer& w, std::uint32_t flags) {
    w.U32(flags);
}

constexpr void GraphicsMode(Writer& w) {
    w.U16(0x0040);                              // dither copy
    for (int i = 0; i < 3; ++i) w.U16(0x8000);  // op colour
}

// --- what all tracks have ----------------------------------------------------------------------------------

constexpr void TrackHeader(Writer& w, std::size_t offset, std::uint32_t flags, std::uint32_t trackId,
                           std::uint32_t width, std::uint32_t height) {
    w.Atom({offset, 92}, "tkhd", [&] {
        Flags(w, flags);
        w.U32(kTime);
        w.U32(kTime);
        w.U32(trackId);
        w.U32(0);
        w.U32(kDuration);
        w.Zeros(8);
        w.U16(0);       // layer
        w.U16(0);       // alternate group
        w.U16(0x0100);  // volume
        w.U16(0);
        IdentityMatrix(w);
        w.U32(width << 16);
        w.U32(height << 16);
    });
}

constexpr void Edits(Writer& w, std::size_t offset) {
    w.Atom({offset, 36}, "edts", [&] {
        w.Atom({offset + 8, 28}, "elst", [&] {
            Flags(w, 0);
            w.U32(1);
            w.U32(kDuration);
            w.U32(0);  // media time
            w.U32(kOne);
        });
    });
}

constexpr void TrackReference(Writer& w, std::size_t offset, std::string_view kind, std::uint32_t trackId) {
    w.Atom({offset, 20}, "tref", [&] { w.Atom({offset + 8, 12}, kind, [&] { w.U32(trackId); }); });
}

constexpr void MediaHeader(Writer& w, std::size_t offset) {
    w.Atom({offset, 32}, "mdhd", [&] {
        Flags(w, 0);
        w.U32(kTime);
        w.U32(kTime);
        w.U32(kTimeScale);
        w.U32(kDuration);
        w.U16(0);  // language
        w.U16(0);  // quality
    });
}

constexpr void Handler(Writer& w, AtomPlace place, std::string_view type, std::string_view subtype,
                       std::uint32_t flags, std::uint32_t mask, std::string_view name) {
    w.Atom(place, "hdlr", [&] {
        Flags(w, 0);
        w.Text(type);
        w.Text(subtype);
        w.Text("appl");
        w.U32(flags);
        w.U32(mask);
        w.PascalText(name);
    });
}

constexpr void BaseMediaInformation(Writer& w, std::size_t offset) {
    w.Atom({offset, 32}, "gmhd", [&] {
        w.Atom({offset + 8, 24}, "gmin", [&] {
            Flags(w, 0);
            GraphicsMode(w);
            w.U16(0);  // balance
            w.U16(0);
        });
    });
}

/// The handler of the data, and where the data is: in this file.
constexpr void DataHandlerAndReference(Writer& w, std::size_t offset) {
    Handler(w, {offset, 57}, "dhlr", "alis", 0x00000001, 0x0001002a, "Apple Alias Data Handler");
    w.Atom({offset + 57, 36}, "dinf", [&] {
        w.Atom({offset + 65, 28}, "dref", [&] {
            Flags(w, 0);
            w.U32(1);
            w.Atom({offset + 81, 12}, "alis", [&] { Flags(w, 0x000001); });
        });
    });
}

/// A sample description of stsd; body() writes what follows the data reference index.
template <typename Body>
constexpr void SampleDescription(Writer& w, AtomPlace table, std::string_view format, Body&& body) {
    w.Atom(table, "stsd", [&] {
        Flags(w, 0);
        w.U32(1);
        w.Atom({table.offset + 16, table.size - 16}, format, [&] {
            w.Zeros(6);
            w.U16(1);  // data reference index
            body();
        });
    });
}

/// Every sample is a chunk of its own.
constexpr void SampleTimesAndChunks(Writer& w, std::size_t offset, std::uint32_t count) {
    w.Atom({offset, 24}, "stts", [&] {
        Flags(w, 0);
        w.U32(1);
        w.U32(count);
        w.U32(kDuration / count);
    });
    w.Atom({offset + 24, 28}, "stsc", [&] {
        Flags(w, 0);
        w.U32(1);
        w.U32(1);  // from the first chunk on
        w.U32(1);  // one sample a chunk
        w.U32(1);  // of the first description
    });
}

/// stts, stsc, stsz and stco of a track with one sample.
constexpr void OneSample(Writer& w, std::size_t offset, std::size_t sampleSize, std::size_t sampleOffset) {
    SampleTimesAndChunks(w, offset, 1);
    w.Atom({offset + 52, 20}, "stsz", [&] {
        Flags(w, 0);
        w.U32(static_cast<std::uint32_t>(sampleSize));
        w.U32(1);
    });
    w.Atom({offset + 72, 20}, "stco", [&] {
        Flags(w, 0);
        w.U32(1);
        w.U32(static_cast<std::uint32_t>(sampleOffset));
    });
}

// --- track 1: the node -------------------------------------------------------------------------------------

constexpr void ImagingProperties(Writer& w, std::size_t offset, std::uint32_t id, std::uint32_t mode,
                                 std::uint32_t quality, std::uint32_t directDraw) {
    w.QtAtom({offset, 76}, "impn", id, 0, [&] {
        w.U16(2);  // major version
        w.U16(0);
        w.U32(mode);
        w.U32(3);  // valid flags
        w.U32(2);  // correction: full
        w.U32(quality);
        w.U32(directDraw);
        w.Zeros(6 * 4 + 2 * 4);
    });
}

/// The world: one node.
constexpr void World(Writer& w) {
    w.QtContainerHeader();
    w.QtAtom({548, 320}, "sean", 1, 3, [&] {
        w.QtAtom({568, 44}, "vrsc", 1, 0, [&] {
            w.U16(2);
            w.U16(0);
            w.U32(0);  // name atom
            w.U32(1);  // default node
            w.U32(0);  // world flags
            w.Zeros(2 * 4);
        });
        w.QtAtom({612, 172}, "imgp", 1, 2, [&] {
            ImagingProperties(w, 632, 1, 2 /* in motion */, 0, 1);
            ImagingProperties(w, 708, 2, 1 /* at rest */, 0x3ff, 0);
        });
        w.QtAtom({784, 84}, "vrnp", 1, 1, [&] {
            w.QtAtom({804, 64}, "vrni", 1, 1, [&] {
                w.QtAtom({824, 44}, "nloc", 1, 0, [&] {
                    w.U16(2);
                    w.U16(0);
                    w.Text("pano");
                    w.U32(0);  // location flags
                    w.U32(0);  // location data
                    w.Zeros(2 * 4);
                });
            });
        });
    });
}

constexpr void NodeTrack(Writer& w) {
    w.Atom({116, 844}, "trak", [&] {
        TrackHeader(w, 124, 0x00000f, 1, kWindowWidth, kWindowHeight);
        Edits(w, 216);
        TrackReference(w, 252, "pano", 2);
        w.Atom({272, 688}, "mdia", [&] {
            MediaHeader(w, 280);
            Handler(w, {312, 51}, "mhlr", "qtvr", 0x80000001, 0x000200b9, "QTVR Media Handler");
            w.Atom({363, 597}, "minf", [&] {
                BaseMediaInformation(w, 371);
                DataHandlerAndReference(w, 403);
                w.Atom({496, 464}, "stbl", [&] {
                    SampleDescription(w, {504, 364}, "qtvr", [&] { World(w); });
                    OneSample(w, 868, kNodeSampleSize, kNodeSample);
                });
            });
        });
    });
}

constexpr void NodeSample(Writer& w) {
    w.QtContainerHeader();
    w.QtAtom({2245, 68}, "sean", 1, 1, [&] {
        w.QtAtom({2265, 48}, "ndhd", 1, 0, [&] {
            w.U16(2);
            w.U16(0);
            w.Text("pano");
            w.U32(1);  // node
            w.U32(0);  // name atom
            w.U32(0);  // comment atom
            w.Zeros(2 * 4);
        });
    });
}

// --- track 2: the panorama ---------------------------------------------------------------------------------

constexpr void PanoramaTrack(Writer& w) {
    w.Atom({960, 545}, "trak", [&] {
        TrackHeader(w, 968, 0x00000f, 2, kWindowWidth, kWindowHeight);
        w.Atom({1060, 24}, "load", [&] {
            w.U32(0);           // preload start
            w.U32(0);           // preload duration
            w.U32(0);           // preload flags
            w.U32(0x00000100);  // default hints: high quality
        });
        Edits(w, 1084);
        TrackReference(w, 1120, "imgt", 3);
        w.Atom({1140, 365}, "mdia", [&] {
            MediaHeader(w, 1148);
            Handler(w, {1180, 60}, "mhlr", "pano", 0x00000001, 0x000200b6, "QTVR Panorama Media Handler");
            w.Atom({1240, 265}, "minf", [&] {
                BaseMediaInformation(w, 1248);
                DataHandlerAndReference(w, 1280);
                w.Atom({1373, 132}, "stbl", [&] {
                    SampleDescription(w, {1381, 32}, std::string_view("\0\0\0\0", 4), [] {});
                    OneSample(w, 1413, kPanoramaSampleSize, kPanoramaSample);
                });
            });
        });
    });
}

constexpr void PanoramaSample(Writer& w, std::uint32_t faceEdge) {
    w.QtContainerHeader();
    w.QtAtom({2325, 180}, "sean", 1, 2, [&] {
        w.QtAtom({2345, 104}, "pdat", 1, 0, [&] {
            w.U16(2);
            w.U16(0);
            w.U32(1);  // track reference of the pictures
            w.U32(0);  // no hot spots
            w.Float(0.0f);
            w.Float(360.0f);  // pan
            w.Float(-45.0f);
            w.Float(45.0f);  // tilt
            w.Float(10.0f);
            w.Float(90.0f);  // field of view
            w.Float(0.0f);
            w.Float(0.0f);
            w.Float(70.0f);                // pan, tilt, field of view at the beginning
            for (int i = 0; i < 2; ++i) {  // pictures, hot spots
                w.U32(4 * faceEdge);
                w.U32(faceEdge);
                w.U16(4);
                w.U16(1);
            }
            w.U32(1);  // flags
            w.Text("cube");
            w.U32(0);
        });
        // The view's own limits are wider than those above; players take these.
        w.QtAtom({2449, 56}, "cuvw", 1, 0, [&] {
            w.Float(0.0f);
            w.Float(360.0f);
            w.Float(-90.0f);
            w.Float(90.0f);
            w.Float(10.0f);
            w.Float(120.0f);
            w.Float(0.0f);
            w.Float(0.0f);
            w.Float(70.0f);
        });
    });
}

// --- track 3: the faces ------------------------------------------------------------------------------------

constexpr void FaceDescription(Writer& w, std::uint32_t faceEdge) {
    w.U16(0);  // version
    w.U16(0);  // revision
    w.Text("appl");
    w.U32(0);           // temporal quality
    w.U32(0x00000200);  // spatial quality
    w.U16(faceEdge & 0xffff);
    w.U16(faceEdge & 0xffff);
    w.U32(72 << 16);  // dots per inch
    w.U32(72 << 16);
    w.U32(0);  // data size
    w.U16(1);  // frames a sample
    w.PascalText("Photo - JPEG", 32);
    w.U16(24);      // depth
    w.U16(0xffff);  // no colour table
}

constexpr void FaceTrack(Writer& w, std::uint32_t faceEdge, const JpegSizes& sizes) {
    w.Atom({1505, 601}, "trak", [&] {
        TrackHeader(w, 1513, 0x00000e /* not enabled */, 3, faceEdge, faceEdge);
        Edits(w, 1605);
        w.Atom({1641, 465}, "mdia", [&] {
            MediaHeader(w, 1649);
            Handler(w, {1681, 58}, "mhlr", "vide", 0, 0x00010020, "Apple Video Media Handler");
            w.Atom({1739, 367}, "minf", [&] {
                w.Atom({1747, 20}, "vmhd", [&] {
                    Flags(w, 0x000001);
                    GraphicsMode(w);
                });
                DataHandlerAndReference(w, 1767);
                w.Atom({1860, 246}, "stbl", [&] {
                    SampleDescription(w, {1868, 102}, "jpeg", [&] { FaceDescription(w, faceEdge); });
                    SampleTimesAndChunks(w, 1970, kFaceCount);
                    w.Atom({2022, 44}, "stsz", [&] {
                        Flags(w, 0);
                        w.U32(0);  // sizes differ
                        w.U32(kFaceCount);
                        for (const std::uint32_t size : sizes) w.U32(size);
                    });
                    w.Atom({2066, 40}, "stco", [&] {
                        Flags(w, 0);
                        w.U32(kFaceCount);
                        std::uint32_t offset = kMovieHeaderSize;
                        for (const std::uint32_t size : sizes) {
                            w.U32(offset);
                            offset += size;
                        }
                    });
                });
            });
        });
    });
}

// --- the file ----------------------------------------------------------------------------------------------

constexpr void MovieHeaderAtom(Writer& w) {
    w.Atom({8, 108}, "mvhd", [&] {
        Flags(w, 0);
        w.U32(kTime);
        w.U32(kTime);
        w.U32(kTimeScale);
        w.U32(kDuration);
        w.U32(kOne);    // rate
        w.U16(0x00ff);  // volume
        w.Zeros(10);
        IdentityMatrix(w);
        w.U32(0);  // preview time
        w.U32(kDuration);
        w.U32(0);  // poster
        w.U32(0);  // selection
        w.U32(0);
        w.U32(0);  // current time
        w.U32(4);  // next track
    });
}

constexpr void UserData(Writer& w) {
    w.Atom({2106, 71}, "udta", [&] {
        w.Atom({2114, 12}, "ctyp", [&] { w.Text("qtvr"); });
        w.Atom({2126, 47}, "\xa9swr", [&] {
            w.U16(static_cast<std::uint32_t>(kAuthoringToolSize));
            w.U16(0);  // language
            w.Text(kAuthoringTool);
            for (std::size_t i = kAuthoringTool.size(); i < kAuthoringToolSize; ++i) w.Text(" ");
        });
        w.Zeros(4);
    });
}

constexpr MovieHeader Compose(std::uint32_t faceEdge, const JpegSizes& sizes) {
    Writer w;
    w.Atom({0, 2177}, "moov", [&] {
        MovieHeaderAtom(w);
        NodeTrack(w);
        PanoramaTrack(w);
        FaceTrack(w, faceEdge, sizes);
        UserData(w);
    });
    w.Atom({2177, 24}, "free", [&] { w.Zeros(16); });
    w.Atom({2201, 8}, "wide");
    // mdat goes on behind the header, with the pictures.
    std::uint32_t mediaSize = kMovieHeaderSize - kMediaData;
    for (const std::uint32_t size : sizes) mediaSize += size;
    w.U32(mediaSize);
    w.Text("mdat");
    w.Atom({2217, 8}, "wide");
    w.U32(0);
    w.Text("mdat");
    NodeSample(w);
    PanoramaSample(w, faceEdge);
    return w.Bytes();
}

// Composed once while compiling, every offset and size above is checked, and where the fields that differ
// from movie to movie have ended up.

constexpr std::uint32_t At(const MovieHeader& header, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8 | std::to_integer<std::uint32_t>(header[offset + i]);
    }
    return value;
}

constexpr bool FieldsAreInTheirPlaces() {
    const JpegSizes sizes = {1, 20, 300, 4000, 50000, 600000};
    const MovieHeader header = Compose(324, sizes);
    std::uint32_t offset = kMovieHeaderSize;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        if (At(header, 2042 + 4 * i) != sizes[i] || At(header, 2082 + 4 * i) != offset) return false;
        offset += sizes[i];
    }
    for (const std::size_t track : {std::size_t{208}, std::size_t{1052}}) {
        if (At(header, track) != 800 << 16 || At(header, track + 4) != 600 << 16) return false;
    }
    return At(header, 1597) == 324 << 16 && At(header, 1601) == 324 << 16 &&
           At(header, 1916) == (324 << 16 | 324) && At(header, 2209) == 296 + offset - kMovieHeaderSize &&
           At(header, 2413) == 1296 && At(header, 2417) == 324 && At(header, 2425) == 1296 &&
           At(header, 2429) == 324;
}
static_assert(FieldsAreInTheirPlaces());

}  // namespace

MovieHeader MakeMovieHeader(std::uint32_t faceEdge, const std::array<std::uint32_t, kFaceCount>& jpegSizes) {
    return Compose(faceEdge, jpegSizes);
}

}  // namespace skyvault
