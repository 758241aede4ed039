// The command line of skyvault-cli, read and checked before anything is done.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "session/batch.h"
#include "session/layouts.h"
#include "settings/settings_table.h"

namespace skyvault {

/// Exit statuses of the program.
enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,      ///< one line on stderr said why
    kWrongUsage = 2,  ///< so did one line and a hint
    kInterrupted = 130,
};

/// Degrees.
struct HeadingPitchRoll {
    float heading = 0, pitch = 0, roll = 0;
};

/// What every command that converts takes.
struct WorkOptions {
    std::wstring settingsFile;                                      ///< empty: the program's defaults
    std::vector<std::pair<const Setting*, std::wstring>> settings;  ///< each fits its type
    std::vector<HeadingPitchRoll> turns;
    std::optional<float> horizon;
    std::optional<float> logoSize;  ///< 0..1
    bool flipHorizontal = false;
    bool mirrorTopToBottom = false;
    bool mirrorFrontToBack = false;
    int quality = 0;                           ///< of JPEG files, 1 to 100; 0: the encoder's default
    DdsEncoding dds = DdsEncoding::BySetting;  ///< of DDS cube maps, as is the next
    bool mips = false;
    int threads = 0;           ///< 0: one per core
    std::uint64_t memory = 0;  ///< bytes that pictures may take; 0: the default
    bool stripMetadata = false;
    bool quiet = false;
};

/// skyvault-cli convert, and generate: a generator makes the panorama from its palette or texture picture.
struct ConvertOptions : WorkOptions {
    const LayoutRow* from = nullptr;  ///< never the preview or the web page; a generator for generate
    const LayoutRow* to = nullptr;    ///< never a generator
    HeadingPitchRoll camera;
    std::vector<std::wstring> inputs;  ///< six for single files, else one
    std::wstring output;
    std::optional<std::uint32_t> seed;  ///< of the random numbers; without it the clock's
};

/// skyvault-cli batch
struct BatchOptions : WorkOptions {
    BatchJob job;
    int shard = 1;  ///< 1 .. shards
    int shards = 1;
    bool skipExisting = false;
};

/// skyvault-cli info
struct InfoOptions {
    std::wstring path;
    std::uint64_t memory = 0;  ///< as of WorkOptions
};

/// Nothing to do but to say something and end: help on stdout, a usage error on stderr.
struct Announcement {
    ExitStatus status = kDone;
    std::wstring text;  ///< whole lines
};

using Command = std::variant<Announcement, ConvertOptions, BatchOptions, InfoOptions>;

/// arguments: without the program's own name.
Command ParseArguments(const std::vector<std::wstring>& arguments);

}  // namespace skyvault
