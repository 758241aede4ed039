#include "cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <memory>

#include "cli/help.h"
#include "codecs/picture_codec.h"
#include "platform/path_text.h"
#include "platform/system_text.h"
#include "platform/utf8.h"
#include "settings/number_text.h"

namespace skyvault {

namespace {

/// What the parser throws at a value that has the right place but the wrong form.
[[noreturn]] void Refuse(const std::string& reason) {
    throw CLI::ValidationError(reason);
}

float ParseNumber(const std::string& option, const std::string& text) {
    float value = 0;
    if (!ParseWholeFloat(FromUtf8(text), value)) Refuse(option + " takes a number, not \"" + text + "\"");
    return value;
}

/// Bytes, with K, M, G or T behind them for 1024 of them and so on.
std::uint64_t ParseMemory(const std::string& text) {
    constexpr std::string_view kUnits = "KMGT";
    std::string digits = text;
    std::size_t unit = kUnits.npos;
    if (!digits.empty())
        unit = kUnits.find(static_cast<char>(std::toupper(static_cast<unsigned char>(digits.back()))));
    if (unit != kUnits.npos) digits.pop_back();
    std::uint64_t count = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, count);
    const unsigned shift = unit != kUnits.npos ? 10 * (static_cast<unsigned>(unit) + 1) : 0;
    if (error != std::errc() || stop != end || count == 0 || count << shift >> shift != count) {
        Refuse("--memory takes a number of bytes, or one with K, M, G or T behind it, not \"" + text + "\"");
    }
    return count << shift;
}

HeadingPitchRoll ParseAngles(const std::string& option, const std::string& text) {
    std::array<float, 3> angles{};
    const std::wstring wide = FromUtf8(text);
    std::wstring_view rest = wide;
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const bool last = i + 1 == angles.size();
        const std::size_t end = last ? rest.size() : rest.find(L',');
        if (end == std::wstring_view::npos || !ParseWholeFloat(rest.substr(0, end), angles[i])) {
            Refuse(option + " takes three angles in degrees as HEADING,PITCH,ROLL, not \"" + text + "\"");
        }
        rest.remove_prefix(last ? end : end + 1);
    }
    return {angles[0], angles[1], angles[2]};
}

/// The form of a settings value, for the message about one that does not fit.
std::string FormOf(const Setting& setting) {
    struct {
        std::string operator()(std::int32_t AppState::*) const { return "a whole number"; }
        std::string operator()(float AppState::*) const { return "a number"; }
        std::string operator()(bool AppState::*) const { return "Y or N"; }
        std::string operator()(std::wstring AppState::*) const { return "a text"; }
        std::string operator()(Color8 AppState::*) const { return "RED,GREEN,BLUE, each 0 to 255"; }
        std::string operator()(ScreenRect AppState::*) const { return "LEFT,TOP,RIGHT,BOTTOM"; }
    } form;
    return std::visit(form, setting.field);
}

std::pair<const Setting*, std::wstring> ParseSetting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) Refuse("--set takes KEY=VALUE, not \"" + text + "\"");
    const std::string key = text.substr(0, equals);
    const std::wstring value = FromSystemBytes(std::string_view(text).substr(equals + 1));
    const Setting* setting = FindSetting(FromUtf8(key));
    if (setting == nullptr) Refuse("--set: there is no setting \"" + key + "\"");
    AppState scratch;
    if (!SetFromText(scratch, *setting, value)) {
        Refuse("--set: " + key + " takes " + FormOf(*setting) + ", not \"" + ToUtf8(value) + "\"");
    }
    return {setting, value};
}

constexpr std::pair<std::string_view, DdsEncoding> kDdsEncodings[] = {
    {"bc1", DdsEncoding::Bc1},   {"bc3", DdsEncoding::Bc3},     {"bc7", DdsEncoding::Bc7},
    {"bc6h", DdsEncoding::Bc6h}, {"rgba8", DdsEncoding::Rgba8}, {"rgba16", DdsEncoding::Rgba16},
    {"half", DdsEncoding::Half},
};

/// "bc1 bc3 ..."
std::string DdsEncodingNames() {
    std::string names;
    for (const auto& [name, encoding] : kDdsEncodings) names.append(names.empty() ? "" : " ").append(name);
    return names;
}

DdsEncoding ParseDdsEncoding(const std::string& text) {
    for (const auto& [name, encoding] : kDdsEncodings)
        if (name == text) return encoding;
    Refuse("--dds takes one of " + DdsEncodingNames() + ", not \"" + text + "\"");
}

const LayoutRow* ParseLayout(const std::string& option, const std::string& name,
                             bool (*fits)(const LayoutRow&)) {
    const LayoutRow* layout = LayoutOfConsoleName(name);
    if (layout == nullptr || !fits(*layout)) {
        const bool exists = layout != nullptr && IsExportLayout(*layout);
        Refuse(exists ? "\"" + name + "\" can be written, but not read: it goes after --to only"
                      : option + ": there is no layout \"" + name + "\"");
    }
    return layout;
}

/// The usage line names the files by what they are for.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() {
        column_width(34);
        label("REQUIRED", "(required)");
    }
    std::string make_usage(const CLI::App* app, std::string) const override {
        const std::string& name = app->get_name();
        if (name == "convert")
            return "Usage: skyvault-cli convert --from LAYOUT --to LAYOUT [OPTIONS] INPUT... OUTPUT\n";
        if (name == "generate")
            return "Usage: skyvault-cli generate KIND --palette FILE --to LAYOUT [OPTIONS] OUTPUT\n";
        if (name == "batch")
            return "Usage: skyvault-cli batch --from LAYOUT --to LAYOUT [OPTIONS] SOURCE_DIR "
                   "DESTINATION_DIR\n";
        if (name == "info") return "Usage: skyvault-cli info [OPTIONS] FILE\n";
        return "Usage: skyvault-cli COMMAND ...\n";
    }
};

/// What the parser collects as text; Checked makes the real options of it.
struct ConvertTexts {
    std::string from, to, palette, extension, settingsFile;
    std::optional<std::string> seed, horizon, logoSize, camera, quality, threads, memory, shard, dds;
    std::vector<std::string> settings, turns, files;
    WorkOptions flags;
    bool subfolders = false, skipExisting = false;
};

void DefineMemory(CLI::App& command, std::optional<std::string>& memory) {
    command
        .add_option("--memory", memory,
                    "Memory a picture may take, as 1500M or 8G; without it three quarters of the machine's")
        ->type_name("SIZE");
}

/// What convert, generate and batch share.
void DefineWork(CLI::App& convert, ConvertTexts& texts) {
    convert.add_option("--set", texts.settings, "Sets a setting by its key in the settings file; repeatable")
        ->allow_extra_args(false)
        ->type_name("KEY=VALUE");
    convert
        .add_option("--settings", texts.settingsFile, "Reads a settings file first; without it defaults hold")
        ->type_name("FILE");
    convert
        .add_option("--turn", texts.turns,
                    "Turns the panorama by these degrees; repeatable, in the order given")
        ->allow_extra_args(false)
        ->type_name("H,P,R");
    convert
        .add_option("--horizon", texts.horizon, "Moves the horizon: above 1 up, below 1 down, 1 not at all")
        ->type_name("P");
    convert.add_option("--logo-size", texts.logoSize, "Size of the logo at the nadir, 0 (none) to 1")
        ->type_name("S");
    convert.add_flag("--flip-horizontal", texts.flags.flipHorizontal,
                     "Exchanges the front with the right, the back with the left");
    convert.add_flag("--mirror-top-to-bottom", texts.flags.mirrorTopToBottom,
                     "Shows the upper half below, too");
    convert.add_flag("--mirror-front-to-back", texts.flags.mirrorFrontToBack,
                     "Shows the front half behind, too");
    convert
        .add_option("--quality", texts.quality,
                    "Quality of JPEG files, 1 to 100; without it the encoder's default")
        ->type_name("Q");
    convert
        .add_option("--dds", texts.dds,
                    "How --to dds stores pixels: " + DdsEncodingNames() + "; without it as CompressDDS says")
        ->type_name("FORMAT");
    convert.add_flag("--mips", texts.flags.mips, "Writes mip levels, too, with --to dds");
    convert.add_option("--threads", texts.threads, "Threads to work with; 0: one per core")->type_name("N");
    DefineMemory(convert, texts.memory);
    convert.add_flag("--strip-metadata", texts.flags.stripMetadata,
                     "Writes no EXIF, XMP and panorama properties; a colour profile stays");
    convert.add_flag("-q,--quiet", texts.flags.quiet, "Prints nothing but errors");
}

/// Where convert and generate write to.
void DefineExport(CLI::App& convert, ConvertTexts& texts) {
    convert.add_option("--to", texts.to, "The layout of OUTPUT")->required()->type_name("LAYOUT");
    DefineWork(convert, texts);
    convert.add_option("--camera", texts.camera, "Where the preview looks, in degrees")->type_name("H,P,R");
}

void DefineConvert(CLI::App& app, ConvertTexts& texts) {
    CLI::App& convert = *app.add_subcommand("convert", "Turns a panorama from one layout into another");
    convert.footer(ConvertFooter());
    convert.add_option("--from", texts.from, "The layout of INPUT")->required()->type_name("LAYOUT");
    DefineExport(convert, texts);
    convert
        .add_option("FILES", texts.files,
                    "INPUT... OUTPUT: a picture (six for single-files), and the file to write")
        ->type_name("");
}

void DefineGenerate(CLI::App& app, ConvertTexts& texts) {
    CLI::App& generate = *app.add_subcommand("generate", "Makes a panorama by formula and writes it");
    generate.footer(GenerateFooter());
    generate.add_option("--palette", texts.palette, "The picture the colours (or textures) come from")
        ->required()
        ->type_name("FILE");
    generate.add_option("--seed", texts.seed, "Start of the random numbers: the same seed, the same picture")
        ->type_name("N");
    DefineExport(generate, texts);
    generate.add_option("FILES", texts.files, "KIND OUTPUT: what to make, and the file to write")
        ->type_name("");
}

void DefineBatch(CLI::App& app, ConvertTexts& texts) {
    CLI::App& batch = *app.add_subcommand("batch", "Converts every panorama of a folder");
    batch.footer(BatchFooter());
    batch.add_option("--from", texts.from, "The layout of the sources")->required()->type_name("LAYOUT");
    batch.add_option("--to", texts.to, "The layout to write")->required()->type_name("LAYOUT");
    batch
        .add_option("--extension", texts.extension,
                    "File type: bmp jpg gif tif png exr hdr; dds and qtvr bring their own (default: png)")
        ->type_name("EXT");
    batch.add_flag("--subfolders", texts.subfolders,
                   "Puts the six files of --to single-files into a folder for each panorama");
    batch.add_flag("--skip-existing", texts.skipExisting, "Leaves out what has its result already");
    batch.add_option("--shard", texts.shard, "Converts the K-th of N equal parts of the sorted folder only")
        ->type_name("K/N");
    DefineWork(batch, texts);
    batch.add_option("FILES", texts.files, "SOURCE_DIR DESTINATION_DIR: both must exist")->type_name("");
}

/// What DefineWork takes.
template <typename Options>
Options CheckedWork(ConvertTexts& texts) {
    Options options;
    static_cast<WorkOptions&>(options) = texts.flags;
    options.settingsFile = FromSystemBytes(texts.settingsFile);
    for (const std::string& text : texts.settings) options.settings.push_back(ParseSetting(text));
    for (const std::string& text : texts.turns) options.turns.push_back(ParseAngles("--turn", text));
    if (texts.horizon) options.horizon = ParseNumber("--horizon", *texts.horizon);
    if (texts.logoSize) {
        options.logoSize = ParseNumber("--logo-size", *texts.logoSize);
        if (*options.logoSize < 0 || *options.logoSize > 1) {
            Refuse("--logo-size goes from 0 to 1, not \"" + *texts.logoSize + "\"");
        }
    }
    if (texts.quality && (!ParseWholeInteger(FromUtf8(*texts.quality), options.quality) ||
                          options.quality < 1 || options.quality > 100)) {
        Refuse("--quality takes a number from 1 to 100, not \"" + *texts.quality + "\"");
    }
    if (texts.threads && (!ParseWholeInteger(FromUtf8(*texts.threads), options.threads) ||
                          options.threads < 0 || options.threads > 1024)) {
        Refuse("--threads takes a number from 0 to 1024, not \"" + *texts.threads + "\"");
    }
    if (texts.memory) options.memory = ParseMemory(*texts.memory);
    if (std::find(texts.files.begin(), texts.files.end(), "") != texts.files.end())
        Refuse("A file name is empty");
    return options;
}

/// A quality is of JPEG files only, the pictures of a movie among them. extension: in capitals.
void CheckQuality(const WorkOptions& options, const LayoutRow& layout, const std::wstring& extension) {
    if (options.quality == 0 || layout.format == PanoramaFormat::QuickTimeVr ||
        ContainerOfExtension(extension) == PictureContainer::Jpeg) {
        return;
    }
    Refuse("--quality goes with JPEG files only (jpg, jpeg, jpe, jfif, and --to qtvr)");
}

/// --dds and --mips, which say how a DDS cube map is written and contradict any other layout.
void CheckDds(const ConvertTexts& texts, const LayoutRow& to, WorkOptions& options) {
    if ((texts.dds || options.mips) && to.format != PanoramaFormat::DirectXDds) {
        Refuse(std::string(texts.dds ? "--dds" : "--mips") + " goes with --to dds only, not with --to " +
               to.consoleName);
    }
    if (texts.dds) options.dds = ParseDdsEncoding(*texts.dds);
}

/// Everything but where the panorama comes from.
ConvertOptions CheckedExport(ConvertTexts& texts) {
    ConvertOptions options = CheckedWork<ConvertOptions>(texts);
    options.to = ParseLayout("--to", texts.to, IsExportLayout);
    CheckDds(texts, *options.to, options);
    if (texts.camera) options.camera = ParseAngles("--camera", *texts.camera);
    return options;
}

ConvertOptions CheckedConvert(ConvertTexts& texts) {
    ConvertOptions options = CheckedExport(texts);
    options.from = ParseLayout("--from", texts.from, IsImportLayout);
    const std::size_t inputs = static_cast<std::size_t>(options.from->sources);
    if (texts.files.size() != inputs + 1) {
        Refuse(std::string("--from ") + options.from->consoleName + " takes " +
               (inputs == 1 ? "one INPUT" : "six INPUTs (front right back left top bottom)") +
               " and one OUTPUT, not " + std::to_string(texts.files.size()) +
               (texts.files.size() == 1 ? " file" : " files"));
    }
    for (std::size_t i = 0; i < inputs; ++i) options.inputs.push_back(FromSystemBytes(texts.files[i]));
    options.output = FromSystemBytes(texts.files.back());
    CheckQuality(options, *options.to, UpperExtension(FileNamePart(options.output)));
    return options;
}

ConvertOptions CheckedGenerate(ConvertTexts& texts) {
    ConvertOptions options = CheckedExport(texts);
    if (texts.files.size() != 2) Refuse("generate takes a KIND and one OUTPUT");
    options.from = LayoutOfConsoleName(texts.files.front());
    if (options.from == nullptr || !IsGenerator(*options.from)) {
        Refuse("there is no generator \"" + texts.files.front() + "\"");
    }
    if (texts.palette.empty()) Refuse("A file name is empty");
    if (texts.seed) {
        int seed = 0;
        if (!ParseWholeInteger(FromUtf8(*texts.seed), seed) || seed < 0) {
            Refuse("--seed takes a number from 0 to 2147483647, not \"" + *texts.seed + "\"");
        }
        options.seed = static_cast<std::uint32_t>(seed);
    }
    options.inputs = {FromSystemBytes(texts.palette)};
    options.output = FromSystemBytes(texts.files.back());
    CheckQuality(options, *options.to, UpperExtension(FileNamePart(options.output)));
    return options;
}

/// The extension a batch writes to the layout: the one asked for, or else the layout's own or png.
std::wstring CheckedExtension(const LayoutRow& layout, const std::string& asked) {
    const std::span<const wchar_t* const> all = BatchExtensions();
    const int format = static_cast<int>(layout.format);
    const std::wstring wide = FromUtf8(asked);
    const auto known = std::find(all.begin(), all.end(), wide);
    if (!asked.empty() && known == all.end()) {
        Refuse("--extension is one of dds mov bmp jpg gif tif png exr hdr, not \"" + asked + "\"");
    }
    const int wanted = known != all.end() ? static_cast<int>(known - all.begin()) : -1;
    const int fitting = BatchExtensionForLayout(format, wanted);
    const std::string own = ToUtf8(all[static_cast<std::size_t>(fitting)]);
    if (!asked.empty() && fitting != wanted) {
        Refuse(std::string("--to ") + layout.consoleName + " does not go with --extension " + asked +
               ", but with " + own);
    }
    return FromUtf8(own);
}

/// "2/5"
void ParseShard(const std::string& text, BatchOptions& options) {
    const std::wstring wide = FromUtf8(text);
    const std::size_t slash = std::min(wide.find(L'/'), wide.size());
    const std::wstring_view view = wide;
    const bool numbers = slash < wide.size() && ParseWholeInteger(view.substr(0, slash), options.shard) &&
                         ParseWholeInteger(view.substr(slash + 1), options.shards);
    if (!numbers || options.shard < 1 || options.shard > options.shards) {
        Refuse("--shard takes K/N with 1 <= K <= N, not \"" + text + "\"");
    }
}

const LayoutRow* ParseBatchLayout(const std::string& option, const std::string& name) {
    const LayoutRow* const layout = ParseLayout(option, name, IsExportLayout);
    if (layout->kind != LayoutKind::Panorama) {
        Refuse(option + ": a batch does not know \"" + name + "\"");
    }
    return layout;
}

BatchOptions CheckedBatch(ConvertTexts& texts) {
    BatchOptions options = CheckedWork<BatchOptions>(texts);
    options.job.to = ParseBatchLayout("--to", texts.to);
    options.job.from = ParseBatchLayout("--from", texts.from);
    CheckDds(texts, *options.job.to, options);
    options.job.extension = CheckedExtension(*options.job.to, texts.extension);
    CheckQuality(options, *options.job.to, UpperCase(options.job.extension));
    options.job.subfolders = texts.subfolders;
    if (texts.subfolders && options.job.to->sources == 1) {
        Refuse("--subfolders goes with --to single-files only");
    }
    options.skipExisting = texts.skipExisting;
    if (texts.shard) ParseShard(*texts.shard, options);
    if (texts.files.size() != 2) Refuse("batch takes a SOURCE_DIR and a DESTINATION_DIR");
    options.job.sourceFolder = FromSystemBytes(texts.files.front());
    options.job.destinationFolder = FromSystemBytes(texts.files.back());
    return options;
}

Announcement WrongUsage(std::string reason, const std::string& command) {
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '.')) reason.pop_back();
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    const std::string help = "skyvault-cli " + (command.empty() ? "" : command + " ") + "--help";
    return {kWrongUsage, FromSystemBytes("skyvault-cli: " + reason + "\nTry \"" + help + "\".\n")};
}

}  // namespace

Command ParseArguments(const std::vector<std::wstring>& arguments) {
    CLI::App app("Converts 360-degree panorama pictures between layouts.", "skyvault-cli");
    app.allow_windows_style_options(false);  // "/home" is a folder
    app.set_version_flag("--version", "skyvault-cli " SKYVAULT_VERSION, "Prints the version and ends");
    app.set_help_flag("-h,--help", "Prints this help and ends");
    app.footer(MainFooter());
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormatter>());

    ConvertTexts convertTexts, generateTexts, batchTexts;
    DefineConvert(app, convertTexts);
    DefineGenerate(app, generateTexts);
    DefineBatch(app, batchTexts);
    CLI::App& info = *app.add_subcommand("info", "Describes a picture file");
    std::string infoPath;
    std::optional<std::string> infoMemory;
    info.footer(InfoFooter());
    info.add_option("FILE", infoPath, "The picture")->required()->type_name("");
    DefineMemory(info, infoMemory);

    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
        std::string text = ToSystemBytes(*argument);
        // The parser takes "[a,b]" for a list of a and b; a path of that form is a relative one.
        if (text.starts_with('[') && text.ends_with(']')) text.insert(0, "./");
        reversed.push_back(std::move(text));
    }
    const auto command = [&]() -> std::string {
        const std::vector<CLI::App*> chosen = app.get_subcommands();
        return chosen.empty() ? "" : chosen.front()->get_name();
    };
    try {
        app.parse(reversed);
        if (command() == "info") {
            if (infoPath.empty()) Refuse("A file name is empty");
            return InfoOptions{FromSystemBytes(infoPath), infoMemory ? ParseMemory(*infoMemory) : 0};
        }
        if (command() == "batch") return CheckedBatch(batchTexts);
        return command() == "generate" ? CheckedGenerate(generateTexts) : CheckedConvert(convertTexts);
    } catch (const CLI::CallForHelp&) {
        return Announcement{kDone, FromUtf8(app.help())};
    } catch (const CLI::CallForVersion& version) {
        return Announcement{kDone, FromUtf8(version.what()) + L"\n"};
    } catch (const CLI::RequiredError& error) {
        // Something mistyped is the likelier cause.
        for (const std::string& extra : app.remaining(true)) {
            if (extra.starts_with("-")) return WrongUsage("There is no option " + extra, command());
            if (command().empty()) return WrongUsage("There is no command \"" + extra + "\"", "");
        }
        if (command().empty())
            return WrongUsage("What to do? Name a command: convert, generate, batch or info", "");
        return WrongUsage(error.what(), command());
    } catch (const CLI::ParseError& error) {
        return WrongUsage(error.what(), command());
    }
}

}  // namespace skyvault
